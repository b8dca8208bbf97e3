#pragma once
// The working format of all analysis: mono, 16 bits, the source's own rate. It lives above the tools
// because the rate comes from the audio probes.

#include <QString>

void soxUt_convertToMono16(const QString& srcFilePath, const QString& dstFilePath, bool normalize);

#pragma once
// `zendrel clean [--settings FILE] [--mp3] FILE…`: the files cleaned side by side as one batch with the
// saved settings (or those of a settings JSON), each result written beside its file; a file of several
// channels has them cleaned apart and joined again. Needs no display; call it before
// any QApplication exists (it makes its own QCoreApplication when there is none). arguments[0] is the
// program name. Returns 0 when every file was cleaned; otherwise each failure has had one line on
// standard error naming the file and why.

#include <QStringList>

int runCleanCommand(const QStringList& arguments);

#pragma once
// The time reference of broadcast WAV files: the sample, counted from midnight, at which the recording
// began. Read from ffmpeg's description of the file; 0 when there is none.

#include <QString>
#include <cstdint>

int64_t aUt_getAudioTimeReference(const QString& path);
// The time reference in seconds (over the file's rate); 0.0 when either is unknown.
double aUt_getTimeStart(const QString& path);
// The integer after "time_reference  : " up to the end of its line, in ffmpeg's description.
int64_t aUt_timeReferenceFromDescription(const QString& description);

#pragma once
// The chain's denoiser: the longest pause of the recording is the noise sample the sound tool profiles
// and subtracts. Blocking; run off the main thread. prog may be null.

#include <QString>
#include <functional>
#include <memory>

class Prog;

// amount 0...1 is how much of the profiled noise comes out.
void soxUt_denoiseDefault(const QString& srcPath, const QString& dstFilePath, double amount,
                          const std::shared_ptr<Prog>& prog);
// The same on the pool; callBack follows there.
void soxUt_denoiseDefaultAsync(const QString& srcPath, const QString& dstFilePath, double amount,
                               std::function<void()> callBack);

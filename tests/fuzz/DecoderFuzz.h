#pragma once
// The decoder fuzz targets' common half: the process set-up (a private home and working folder, the
// scripted interaction door, a few assets in the store so that seeds resolve), the seeds made by the
// model's own API, and the checks every decoded object must pass. Each target is one
// LLVMFuzzerTestOneInput built from DecoderFuzz.cpp; with clang it links libFuzzer, otherwise
// FuzzDriver.cpp replays the seeds and the regression corpus and then mutates inputs for a while.

#include <QByteArray>
#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Archives of this target's kind made through the API (after LLVMFuzzerInitialize).
std::vector<QByteArray> fuzzSeeds();
// "archive", "show", "episode" or "timeline".
const char* fuzzTargetName();

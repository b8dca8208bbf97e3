#include "playback/engine/Mixer.h"

#include <algorithm>
#include <cmath>
#include <thread>

namespace {

// A fade command in one word: armed (1 bit), the voice's generation (8), the fade's length in frames
// (24, over six minutes) and the delay before it (31, over thirteen hours).
constexpr int kDelayBits = 31;
constexpr int kLengthBits = 24;
constexpr uint64_t kDelayMask = (uint64_t{1} << kDelayBits) - 1;
constexpr uint64_t kLengthMask = (uint64_t{1} << kLengthBits) - 1;

uint64_t packFade(bool armed, uint32_t generation, int64_t delayFrames, int64_t fadeFrames) {
    const auto delay = static_cast<uint64_t>(std::clamp<int64_t>(delayFrames, 0, kDelayMask));
    const auto length = static_cast<uint64_t>(std::clamp<int64_t>(fadeFrames, 1, kLengthMask));
    return (uint64_t{armed} << 63) | (uint64_t{generation & 0xffu} << (kDelayBits + kLengthBits)) |
           (length << kDelayBits) | delay;
}
bool fadeArmed(uint64_t command) {
    return (command >> 63) != 0;
}
uint32_t fadeGeneration(uint64_t command) {
    return static_cast<uint32_t>((command >> (kDelayBits + kLengthBits)) & 0xffu);
}
int64_t fadeLength(uint64_t command) {
    return static_cast<int64_t>((command >> kDelayBits) & kLengthMask);
}
int64_t fadeDelay(uint64_t command) {
    return static_cast<int64_t>(command & kDelayMask);
}

} // namespace

Mixer::Mixer() : scratch_(static_cast<size_t>(kBlockFrames * kChannels)) {}

int Mixer::addVoice(std::shared_ptr<VoiceSource> source, float gain) {
    if (!source) return -1;
    std::lock_guard lock(ownersMutex_);
    for (int i = 0; i < kMaxVoices; ++i) {
        if (owners_[static_cast<size_t>(i)]) continue;
        Slot& slot = slots_[static_cast<size_t>(i)];
        slot.paused.store(false);
        slot.ended.store(false);
        slot.fadedOut.store(false);
        // A fade left armed by the slot's last voice must not reach this one.
        const uint32_t generation = slot.voiceGeneration.fetch_add(1) + 1;
        slot.fadeCommand.store(packFade(false, generation, 0, 0), std::memory_order_release);
        for (auto& power : slot.meanSquare)
            power.store(0.0f);
        setGain(i, gain, 0);
        owners_[static_cast<size_t>(i)] = std::move(source);
        slot.source.store(owners_[static_cast<size_t>(i)].get());
        return i;
    }
    return -1;
}

void Mixer::removeVoice(int voice) {
    if (voice < 0 || voice >= kMaxVoices) return;
    std::lock_guard lock(ownersMutex_);
    if (!owners_[static_cast<size_t>(voice)]) return;
    Slot& slot = slots_[static_cast<size_t>(voice)];
    slot.source.store(nullptr);
    // At most one block: the audio thread is inside this slot's pull.
    while (slot.inUse.load())
        std::this_thread::yield();
    owners_[static_cast<size_t>(voice)].reset();
}

void Mixer::setGain(int voice, float gain, int64_t rampFrames) {
    if (voice < 0 || voice >= kMaxVoices) return;
    Slot& slot = slots_[static_cast<size_t>(voice)];
    slot.targetGain.store(gain, std::memory_order_relaxed);
    slot.rampFrames.store(std::max<int64_t>(rampFrames, 0), std::memory_order_relaxed);
    slot.gainSerial.fetch_add(1, std::memory_order_release);
}

void Mixer::fadeOut(int voice, int64_t delayFrames, int64_t fadeFrames) {
    if (voice < 0 || voice >= kMaxVoices) return;
    Slot& slot = slots_[static_cast<size_t>(voice)];
    slot.fadeCommand.store(packFade(true, slot.voiceGeneration.load(), delayFrames, fadeFrames),
                           std::memory_order_release);
}

bool Mixer::fadedOut(int voice) const {
    return voice >= 0 && voice < kMaxVoices && slots_[static_cast<size_t>(voice)].fadedOut.load();
}

void Mixer::setPaused(int voice, bool paused) {
    if (voice >= 0 && voice < kMaxVoices) slots_[static_cast<size_t>(voice)].paused.store(paused);
}

bool Mixer::ended(int voice) const {
    return voice >= 0 && voice < kMaxVoices && slots_[static_cast<size_t>(voice)].ended.load();
}

double Mixer::averagePowerDb(int voice, int channel) const {
    if (voice < 0 || voice >= kMaxVoices || channel < 0 || channel >= kChannels) return kSilenceDb;
    const float power = slots_[static_cast<size_t>(voice)].meanSquare[static_cast<size_t>(channel)].load();
    return power > 0.0f ? std::max(10.0 * std::log10(static_cast<double>(power)), kSilenceDb) : kSilenceDb;
}

void Mixer::render(float* out, int64_t frames) noexcept {
    while (frames > 0) {
        const int64_t block = std::min(frames, kBlockFrames);
        renderBlock(out, block);
        out += block * kChannels;
        frames -= block;
    }
}

void Mixer::renderBlock(float* out, int64_t frames) noexcept {
    std::fill(out, out + frames * kChannels, 0.0f);
    for (Slot& slot : slots_) {
        // Marked before the pointer is read: see removeVoice.
        slot.inUse.store(true);
        VoiceSource* source = slot.source.load();
        if (source && !slot.paused.load(std::memory_order_relaxed)) mixSlot(slot, *source, out, frames);
        slot.inUse.store(false);
    }
}

bool Mixer::advanceFade(Slot& slot, float& factor) noexcept {
    factor = slot.fadeGain;
    if (!slot.fadeArmed) return true;
    if (slot.fadeDelayLeft > 0) {
        --slot.fadeDelayLeft;
        return true;
    }
    if (slot.fadeLeft <= 0) return false;
    --slot.fadeLeft;
    slot.fadeGain = std::max(slot.fadeGain - slot.fadeStep, 0.0f);
    factor = slot.fadeGain;
    return true;
}

void Mixer::mixSlot(Slot& slot, VoiceSource& source, float* out, int64_t frames) noexcept {
    if (slot.fadedOut.load(std::memory_order_relaxed)) {
        for (auto& power : slot.meanSquare)
            power.store(0.0f, std::memory_order_relaxed);
        return;
    }
    const uint64_t command = slot.fadeCommand.load(std::memory_order_acquire);
    if (command != slot.seenFadeCommand) {
        const bool sameVoice = fadeGeneration(command) == fadeGeneration(slot.seenFadeCommand);
        slot.seenFadeCommand = command;
        const int64_t fadeFrames = fadeLength(command);
        // A new fade of the same voice goes on from the level the last one reached.
        if (!sameVoice || !slot.fadeArmed) slot.fadeGain = 1.0f;
        slot.fadeArmed = fadeArmed(command);
        slot.fadeDelayLeft = fadeDelay(command);
        slot.fadeLeft = fadeFrames;
        slot.fadeStep = fadeFrames > 0 ? slot.fadeGain / static_cast<float>(fadeFrames) : 0.0f;
    }
    const uint32_t serial = slot.gainSerial.load(std::memory_order_acquire);
    if (serial != slot.seenSerial) {
        slot.seenSerial = serial;
        slot.rampTarget = slot.targetGain.load(std::memory_order_relaxed);
        slot.rampLeft = slot.rampFrames.load(std::memory_order_relaxed);
        if (slot.rampLeft == 0) slot.gain = slot.rampTarget;
        slot.step =
            slot.rampLeft > 0 ? (slot.rampTarget - slot.gain) / static_cast<float>(slot.rampLeft) : 0.0f;
    }
    float* in = scratch_.data();
    const int64_t got = std::clamp<int64_t>(source.pull(in, frames), 0, frames);
    if (got < frames) {
        std::fill(in + got * kChannels, in + frames * kChannels, 0.0f);
        slot.ended.store(true, std::memory_order_relaxed);
    }
    std::array<double, kChannels> squares{};
    for (int64_t f = 0; f < frames; ++f) {
        float fade = 1.0f;
        if (!advanceFade(slot, fade)) {
            slot.fadedOut.store(true, std::memory_order_relaxed);
            slot.ended.store(true, std::memory_order_relaxed);
            break;
        }
        if (slot.rampLeft > 0) {
            slot.gain += slot.step;
            // The last step lands exactly on the target, whatever the rounding on the way.
            if (--slot.rampLeft == 0) slot.gain = slot.rampTarget;
        }
        for (int c = 0; c < kChannels; ++c) {
            const float v = in[f * kChannels + c] * slot.gain * fade;
            squares[static_cast<size_t>(c)] += static_cast<double>(v) * v;
            out[f * kChannels + c] += v;
        }
    }
    for (int c = 0; c < kChannels; ++c)
        slot.meanSquare[static_cast<size_t>(c)].store(
            static_cast<float>(squares[static_cast<size_t>(c)] / static_cast<double>(frames)),
            std::memory_order_relaxed);
}

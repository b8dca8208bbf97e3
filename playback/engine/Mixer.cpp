#include "playback/engine/Mixer.h"

#include <algorithm>
#include <cmath>
#include <thread>

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
        slot.fadeFrames.store(-1, std::memory_order_relaxed);
        slot.fadeSerial.fetch_add(1, std::memory_order_release);
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
    slot.fadeDelay.store(std::max<int64_t>(delayFrames, 0), std::memory_order_relaxed);
    slot.fadeFrames.store(std::max<int64_t>(fadeFrames, 1), std::memory_order_relaxed);
    slot.fadeSerial.fetch_add(1, std::memory_order_release);
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
    const uint32_t fadeSerial = slot.fadeSerial.load(std::memory_order_acquire);
    if (fadeSerial != slot.seenFadeSerial) {
        slot.seenFadeSerial = fadeSerial;
        const int64_t fadeFrames = slot.fadeFrames.load(std::memory_order_relaxed);
        slot.fadeArmed = fadeFrames > 0;
        slot.fadeGain = 1.0f;
        slot.fadeDelayLeft = slot.fadeDelay.load(std::memory_order_relaxed);
        slot.fadeLeft = std::max<int64_t>(fadeFrames, 0);
        slot.fadeStep = fadeFrames > 0 ? 1.0f / static_cast<float>(fadeFrames) : 0.0f;
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

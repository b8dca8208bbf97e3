#pragma once
// The real-time sum of the voices. render() runs on the audio thread and takes no lock, allocates
// nothing and reads no file; the other members may be called from any thread but the audio one (a
// lock guards the slots' owners, and the settings of a voice are atomics).
//
// A voice's source is handed over through an atomic pointer. The audio thread marks a slot in use
// before it reads the pointer and unmarks it after the pull; removeVoice clears the pointer and then
// waits for the mark to drop, so a source is never destroyed while it plays, nor on the audio thread.

#include "playback/engine/VoiceSource.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

class Mixer {
public:
    static constexpr int kMaxVoices = 64;
    static constexpr int kChannels = 2;
    // render() works through longer requests in blocks of this many frames.
    static constexpr int64_t kBlockFrames = 1024;
    static constexpr double kSilenceDb = -160.0;

    Mixer();
    Mixer(const Mixer&) = delete;
    Mixer& operator=(const Mixer&) = delete;

    // The voice's slot, or -1 when every slot is taken. It plays from the next block at `gain`.
    int addVoice(std::shared_ptr<VoiceSource> source, float gain = 1.0f);
    void removeVoice(int voice);
    // The gain moves linearly to `gain` over `rampFrames` frames, from the next block on.
    void setGain(int voice, float gain, int64_t rampFrames = 0);
    // After `delayFrames` more frames of the voice, its sound fades to nothing over `fadeFrames` and the
    // voice ends. Counted in frames of the voice, so the fade lands where it was asked whatever the
    // output's block size; independent of the gain, which may go on changing meanwhile.
    void fadeOut(int voice, int64_t delayFrames, int64_t fadeFrames);
    // The voice ended because a fade-out finished.
    bool fadedOut(int voice) const;
    // A paused voice is not pulled: its source keeps its place.
    void setPaused(int voice, bool paused);
    // The source delivered fewer frames than asked for.
    bool ended(int voice) const;
    // Mean power of a channel as heard (after the gain) over the last block the voice played, in dB of
    // full scale.
    double averagePowerDb(int voice, int channel) const;

    // Audio thread: the sum of the playing voices, `frames` interleaved stereo frames into `out`.
    void render(float* out, int64_t frames) noexcept;

private:
    struct Slot {
        std::atomic<VoiceSource*> source{nullptr};
        std::atomic<bool> inUse{false};
        std::atomic<bool> paused{false};
        std::atomic<bool> ended{false};
        std::atomic<float> targetGain{1.0f};
        std::atomic<int64_t> rampFrames{0};
        // Bumped by each setGain, so the audio side knows to start a new ramp.
        std::atomic<uint32_t> gainSerial{0};
        // One word, so the audio thread never sees half a command: see packFade.
        std::atomic<uint64_t> fadeCommand{0};
        // Bumped for each new voice of the slot; a fade names the voice it is for.
        std::atomic<uint32_t> voiceGeneration{0};
        std::atomic<bool> fadedOut{false};
        std::array<std::atomic<float>, kChannels> meanSquare{};
        // Audio thread only.
        float gain = 1.0f;
        float step = 0.0f;
        float rampTarget = 1.0f;
        int64_t rampLeft = 0;
        uint32_t seenSerial = 0;
        uint64_t seenFadeCommand = 0;
        bool fadeArmed = false;
        int64_t fadeDelayLeft = 0;
        int64_t fadeLeft = 0;
        float fadeGain = 1.0f;
        float fadeStep = 0.0f;
    };

    void renderBlock(float* out, int64_t frames) noexcept;
    void mixSlot(Slot& slot, VoiceSource& source, float* out, int64_t frames) noexcept;
    // Audio thread: the fade factor of the next frame; false once the fade has run out.
    static bool advanceFade(Slot& slot, float& factor) noexcept;

    std::array<Slot, kMaxVoices> slots_;
    std::mutex ownersMutex_;
    std::array<std::shared_ptr<VoiceSource>, kMaxVoices> owners_; // under ownersMutex_
    std::vector<float> scratch_;                                  // audio side, sized once
};

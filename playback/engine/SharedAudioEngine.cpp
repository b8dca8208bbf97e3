#include "playback/engine/SharedAudioEngine.h"

#include "playback/engine/AudioEngine.h"

AudioEngine& sharedAudioEngine() {
    static AudioEngine* engine = [] {
        // Never destroyed: players may outlive static destruction order.
        auto* made = new AudioEngine();
        made->startNullOutput();
        return made;
    }();
    return *engine;
}

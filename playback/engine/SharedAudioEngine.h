#pragma once
// The process-wide engine every player plays through. Made on first use with the null output
// running; a device, or offline mode for tests, is chosen on it afterwards.

class AudioEngine;

AudioEngine& sharedAudioEngine();

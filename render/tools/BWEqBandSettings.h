#pragma once
// One band of the graphic equalizer. Bands are applied in list order; a band with frequency 0 is off.

class BWEqBandSettings {
public:
    double frequency = 0.0; // Hz
    double gain = 0.0;      // dB
};

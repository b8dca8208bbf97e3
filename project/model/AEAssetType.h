#pragma once

// Archived as these integers.
enum class AEAssetType { speech = 0, jingle = 1, music = 2, bgm = 3, ad = 4, effect = 5, silence = 6 };

// Archived as these integers.
enum class BWStatus {
    none = 0,
    sourceBusy,
    sourceDone,
    destinationBusy,
    destinationDone,
    brightwashedVersion
};

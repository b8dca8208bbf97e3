#pragma once
// Ducking of background music under speech. Stand-in until the speech analysis lands: the callers
// already ask for a ducking where they must, and no dip is made yet.

#include <memory>

class AETimeLine;
class AETimeLineItem;

class AEDucking {
public:
    static void duck(const std::shared_ptr<AETimeLineItem>& item, AETimeLine& timeline);
};

#pragma once
// The two lists of external components the program asks for: the base list (self-update helper, sound
// tool, media converter) and the extended one, which adds the tag editor and is what start-up uses.

#include <functional>

class Preloads {
public:
    static void doBaseZendrelUtils(std::function<void()> completionHandler);
    static void doExtendedZendrelUtils(std::function<void()> completionHandler);
};

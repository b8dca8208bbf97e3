#pragma once
// Tests that run the real sound tools: a scratch folder with audio made by the installed tools, a
// scripted door and a copy of the log.

#include "support/ScriptedSession.h"
#include "support/TestAudio.h"

#include <gtest/gtest.h>

class ToolFixture : public ::testing::Test, protected ScriptedSession, protected TestAudio {
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }
};

#include "foundation/Interaction.h"

#include "foundation/Log.h"

#include <gtest/gtest.h>

TEST(Interaction, ScriptedDoorAnswersFromItsQueuesThenDefaultsAndAlertsReachTheLog) {
    auto door = std::make_shared<ScriptedInteraction>();
    setUserInteraction(door);
    door->queueConfirm(false);
    door->queuePath("/tmp/chosen");
    EXPECT_FALSE(ih_alertOkCancel("Warning", "Really?"));
    EXPECT_TRUE(ih_alertOkCancel("Warning", "Again?"));
    EXPECT_EQ(fu_selectFolder("Choose", "msg", "/start"), "/tmp/chosen");
    EXPECT_EQ(fu_selectFolder("Choose", "msg", "/start"), "");
    const auto lines = door->transcript();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "confirm: Warning | Really? -> Cancel");
    EXPECT_EQ(lines[2], "selectFolder: Choose | msg | /start -> /tmp/chosen");

    std::vector<QString> seen;
    const int token = addLogSink([&](const QString& l) { seen.push_back(l); });
    Warning("Warning", "This feature is not yet implemented.");
    removeLogSink(token);
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.back(), "alert: Warning | This feature is not yet implemented.");
    setUserInteraction(nullptr);
}

// The common assets window: a new order and a removal reach the global list, the show and its file;
// a removal the person declines changes nothing.

#include "app/windows/CommonAssetsWindow.h"

#include "app/windows/AssetListWidget.h"
#include "project/model/AEAsset.h"
#include "project/model/AEAssetDB.h"
#include "project/panels/AEAssetMiniInspectorVC.h"
#include "project/panels/AssetTypeButtons.h"
#include "tests/project/panels/ShowFixture.h"
#include "timeline/model/TimelineFixture.h"

#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

namespace {

class CommonAssetsWindowTest : public ShowFixture {
protected:
    void SetUp() override {
        ShowFixture::SetUp();
        for (const char* id : {"common-a", "common-b", "common-c"}) {
            auto asset = tlfixture::asset(id, 3.0);
            AEAssetDB::saveAsset(asset);
            zendrelShow->commonAssets.push_back(asset);
        }
        AEAssetListVCGlobal = zendrelShow->commonAssets;
    }
    void TearDown() override {
        AEAssetListVCGlobal.clear();
        ShowFixture::TearDown();
    }

    static QStringList ids(const std::vector<std::shared_ptr<AEAsset>>& assets) {
        QStringList out;
        for (const auto& a : assets)
            out << a->id;
        return out;
    }
    QStringList savedIds() const { return ids(AEShow::load(showPath())->commonAssets); }
};

} // namespace

TEST_F(CommonAssetsWindowTest, ReorderAndRemoveReachTheSavedShow) {
    CommonAssetsWindow window;
    ASSERT_EQ(window.list()->count(), 3);
    window.moveAsset(0, 2);
    const QStringList moved{"common-b", "common-c", "common-a"};
    EXPECT_EQ(ids(AEAssetListVCGlobal), moved);
    EXPECT_EQ(ids(zendrelShow->commonAssets), moved);
    EXPECT_EQ(savedIds(), moved);
    EXPECT_EQ(window.list()->assetAt(0)->id, "common-b");

    door->queueConfirm(false);
    EXPECT_FALSE(window.removePressed(1));
    EXPECT_EQ(savedIds(), moved);
    EXPECT_TRUE(transcript().join("\n").contains("You *really* want to remove this asset?"));

    door->queueConfirm(true);
    EXPECT_TRUE(window.removePressed(1));
    EXPECT_EQ(savedIds(), QStringList({"common-b", "common-a"}));
    EXPECT_EQ(window.list()->count(), 2);

    // The row's small panel: name and type, saved with the asset's record.
    auto* mini = window.openMiniInspector(0);
    ASSERT_TRUE(mini);
    mini->assetName->setText("Sting");
    mini->buttons->button(AEAssetType::effect)->click();
    mini->okButton->click();
    const auto record = KeyedUnarchiver::unarchive<AEAsset>(AEAssetDB::getPath(*AEAssetListVCGlobal[0]));
    ASSERT_TRUE(record);
    EXPECT_EQ(record->name, "Sting");
    EXPECT_EQ(record->type, AEAssetType::effect);
}

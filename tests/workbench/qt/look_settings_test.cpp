#include "workbench/qt/LookSettings.h"

#include <gtest/gtest.h>

#include "support/scratch_folder.h"

namespace kalvex::window {
namespace {

class LookSettingsTest : public testing::Test {
  protected:
    QString Path() const { return QString::fromStdString(m_folder.Path("Kalvex.window")); }

    support::ScratchFolder m_folder;
};

TEST_F(LookSettingsTest, WithoutAFileEverythingIsUsual) {
    const LookSettings look(Path());
    EXPECT_EQ(look.GetScheme(), Scheme::Desktop);
    EXPECT_EQ(look.GetZoom(), 0);
    EXPECT_TRUE(look.IsOn("numery", true));
    EXPECT_FALSE(look.IsOn("numery", false));
    EXPECT_EQ(look.GetRecentFiles(), QStringList());
    EXPECT_EQ(look.GetSearches(), QStringList());
    EXPECT_FALSE(look.GetPlace("/a.kx"));
    EXPECT_EQ(look.GetGeometry(), QByteArray());
}

TEST_F(LookSettingsTest, WhatIsSetIsThereInTheNextProcess) {
    {
        LookSettings look(Path());
        look.SetMain("miejsce", "paski");
        look.SetZoom(-3);
        look.SetOn("numery", false);
        look.SetPlace(QString::fromUtf8("/żółw/a=b [1].kx"), {QRect(1, 2, 30, 40), true});
        look.SetPlace("/b.kx", {QRect(5, 6, 70, 80), false});
        look.SetSearches({"a, b", "c"});
    }
    const LookSettings look(Path());
    EXPECT_EQ(look.GetGeometry(), "miejsce");
    EXPECT_EQ(look.GetState(), "paski");
    EXPECT_EQ(look.GetZoom(), -3);
    EXPECT_FALSE(look.IsOn("numery", true));
    const auto place = look.GetPlace(QString::fromUtf8("/żółw/a=b [1].kx"));
    ASSERT_TRUE(place);
    EXPECT_EQ(place->rectangle, QRect(1, 2, 30, 40));
    EXPECT_TRUE(place->maximised);
    EXPECT_FALSE(look.GetPlace("/b.kx")->maximised);
    EXPECT_EQ(look.GetSearches(), QStringList({"a, b", "c"}));
}

TEST_F(LookSettingsTest, EachSchemeIsKept) {
    for (const Scheme scheme : {Scheme::Dark, Scheme::Light, Scheme::Desktop}) {
        LookSettings(Path()).SetScheme(scheme);
        EXPECT_EQ(LookSettings(Path()).GetScheme(), scheme);
    }
}

TEST_F(LookSettingsTest, TenNewestFilesAreKeptOnceEach) {
    LookSettings look(Path());
    for (int i = 0; i < 12; ++i) look.AddRecentFile(QString("/%1.kx").arg(i));
    look.AddRecentFile("/5.kx");
    EXPECT_EQ(look.GetRecentFiles(), QStringList({"/5.kx", "/11.kx", "/10.kx", "/9.kx", "/8.kx",
                                                  "/7.kx", "/6.kx", "/4.kx", "/3.kx", "/2.kx"}));
    look.RemoveRecentFile("/9.kx");
    EXPECT_EQ(look.GetRecentFiles().size(), 9);
    EXPECT_FALSE(look.GetRecentFiles().contains("/9.kx"));
}

TEST_F(LookSettingsTest, TwentySearchesAreKept) {
    LookSettings look(Path());
    QStringList texts;
    for (int i = 0; i < 25; ++i) texts.append(QString::number(i));
    look.SetSearches(texts);
    EXPECT_EQ(look.GetSearches(), texts.mid(0, 20));
}

TEST_F(LookSettingsTest, DamagedFileIsUsual) {
    m_folder.Put("Kalvex.window", "[okno]\nschemat=fioletowy\n[skrypty]\nx=1\n[edytor]\n=\n");
    const LookSettings look(Path());
    EXPECT_EQ(look.GetScheme(), Scheme::Desktop);
    EXPECT_EQ(look.GetZoom(), 0);
}

}  // namespace
}  // namespace kalvex::window

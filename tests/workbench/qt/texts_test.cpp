#include "workbench/qt/Texts.h"

#include <gtest/gtest.h>

namespace kalvex::window {
namespace {

TEST(TextsTest, PolishLettersGoBothWays) {
    const QString text = QString::fromUtf8("Zażółć gęślą jaźń");
    EXPECT_EQ(FromQt(text), "Za\xbf\xf3\xb3\xe6 g\xea\x9cl\xb9 ja\x9f\xf1");
    EXPECT_EQ(ToQt(FromQt(text)), text);
}

TEST(TextsTest, WhatTheCodePageLacksBecomesAQuestionMark) {
    EXPECT_EQ(FromQt(QString::fromUtf8("λ€")), "?\x80");
}

}  // namespace
}  // namespace kalvex::window

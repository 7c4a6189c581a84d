// A world in which nothing is logged and nobody is logged in or asked, for benchmarks.
#pragma once

#include <string>
#include <string_view>

#include "platform/LogSink.h"
#include "platform/Questions.h"
#include "platform/Users.h"

namespace kalvex {

class NoLog final : public LogSink {
  public:
    void Log(std::string_view, int) override {}
};

class Nobody final : public Users {
  public:
    std::string GetActiveUserName() const override { return {}; }
    std::string GetActiveUserDescription() const override { return {}; }
    std::string GetAccountName() const override { return {}; }
};

}  // namespace kalvex

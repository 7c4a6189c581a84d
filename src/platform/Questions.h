// Questions to the person at the keyboard. A process that is not interactive answers for itself and
// never blocks.
#pragma once

#include <string_view>

namespace kalvex::platform {

class Questions {
  public:
    virtual ~Questions() = default;
    virtual bool AskYesNo(std::string_view text) = 0;  // Windows-1250
};

// Where nobody is at the keyboard nothing is agreed to.
class NoAnswers final : public Questions {
  public:
    bool AskYesNo(std::string_view) override { return false; }
};

}  // namespace kalvex::platform

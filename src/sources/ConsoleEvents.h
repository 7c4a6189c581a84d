// What a console hears of the module that it mirrors. Main thread; engine texts.
#pragma once

#include <cstdint>
#include <string_view>

#include "value/Value.h"

namespace kalvex::sources {

class ConsoleEvents {
  public:
    virtual ~ConsoleEvents() = default;

    // A value of a registered variable, before it is stored: what the module holds when it is asked
    // for the variable, which is the past, and what it sets then. A write of this console that the
    // module confirms counts as the latter.
    virtual void OnHeldValue(std::string_view variable, const value::CVal& value) = 0;
    virtual void OnControlValue(std::string_view variable, const value::CVal& value) = 0;

    // A source has let this console in; nothing is subscribed yet in the new conversation.
    virtual void OnConnected(std::string_view source) = 0;
    // The conversation with the source has ended, whoever ended it.
    virtual void OnConnectionLost(std::string_view source) = 0;
    virtual void OnModuleLog(int level, std::int64_t time, std::string_view text) = 0;
};

}  // namespace kalvex::sources

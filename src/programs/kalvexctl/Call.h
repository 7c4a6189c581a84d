// One call of kalvexctl, as its commands see it. Main thread.
#pragma once

#include <string>

#include "platform/Translator.h"
#include "programs/kalvexctl/Endings.h"
#include "programs/kalvexctl/Login.h"
#include "programs/kalvexctl/Loop.h"
#include "programs/kalvexctl/Options.h"
#include "programs/kalvexctl/Output.h"
#include "vantrel/network/Endpoint.h"

namespace kalvex::kalvexctl {

inline constexpr const char* kDefaultModule = "Kalvex";

// All that is referred to outlives it.
class Call {
  public:
    const ControlOptions& options;
    OrderArguments arguments;
    Loop& loop;
    Output& output;
    const platform::Translator& translator;
    const Login& login;
    const vantrel::ServerAddresses& addresses;

    std::string GetModule() const {
        return options.modules.empty() ? kDefaultModule : options.modules.back();
    }
    Ending Fail(Fault fault, std::initializer_list<std::string_view> values) const {
        return MakeEnding(fault, values, translator);
    }
};

// Runs the command; the answer is the exit status.
int RunKalvexctl(const ControlLine& line);

}  // namespace kalvex::kalvexctl

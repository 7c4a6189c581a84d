// A plant in which an operator may write what everybody may read, and sees what others do not.
#pragma once

#include "server_fixture.h"

namespace kalvex::server {

inline constexpr const char* kOperatorsPlant = R"(
[[access]]
variables = "Tajne.*"
read = "gaz"
write = "gaz"
[[access]]
variables = "Z1.*"
read = "0"
write = "50"
[[variable]]
name = "Z1.P"
un = "MPa"
min = 0
max = 10
at = 32
rt = 30
value = 5
[[variable]]
name = "Z1.N"
type = "int"
at = 32
rt = 2
[[variable]]
name = "Z1.T"
type = "text"
at = 32
rt = 2
[[variable]]
name = "Z1.S"
signal = "ramp from=0 to=3600 period=3600"
[[variable]]
name = "Tajne.X"
value = 1
)";

class OperatorTest : public ServerTest {
  protected:
    OperatorTest() {
        Start(kOperatorsPlant);
        AddUser("adam", "tajne", 50, {"gaz"});
    }
    TestClient& Operator() { return LogIn("adam", "tajne"); }

    const std::string m_adam = "Klient Kalvex_stacja, użytkownik adam: odmowa: ";
    const std::string m_nobody = "Klient Kalvex_stacja, użytkownik NOBODY: odmowa: ";
};

}  // namespace kalvex::server

// Messages of clients, one of each kind and some at the edges.
#pragma once

#include <vector>

#include "vantrel/Messages.h"

namespace kalvex::fuzz {

std::vector<vantrel::ClientMessage> SampleClientMessages();

}  // namespace kalvex::fuzz

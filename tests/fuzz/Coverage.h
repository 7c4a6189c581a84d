// Which places of the code inputs have reached, in a build that calls at each of them. In any other
// one there are never news.
#pragma once

namespace kalvex::fuzz {

// Whether a way from one place to the next has been gone since the last call for the first time.
bool TakeNews();

}  // namespace kalvex::fuzz

#include "programs/kalvex-run/RunSources.h"

namespace kalvex {

std::unique_ptr<CRunSources> MakeRunSources(const RunOptions& options, std::string& fault) {
    if (options.plant) fault = "--plant: this build has no simulated plant";
    if (options.profile) fault = "--profile: this build reads no profile";
    return nullptr;
}

}  // namespace kalvex

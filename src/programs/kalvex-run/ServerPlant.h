// The configuration of a data server, read as a plant: its variables with their definitions, the
// values that they begin with, and their signals, which move by the clock of the scripts. Rights,
// bounds, archives and reports are the server's own and not simulated.
#pragma once

#include <string>

#include "platform/Translator.h"
#include "vantrel/plant/PlantFile.h"

namespace kalvex::run {

// A file that is named so is read by ReadServerPlant.
bool IsServerConfiguration(const std::string& path);

// One source, of the server's name. False with all that is wrong in `fault` (UTF-8), a line each.
bool ReadServerPlant(const std::string& path, const platform::Translator& translator,
                     vantrel::PlantDefinition& plant, std::string& fault);

}  // namespace kalvex::run

// The files of an audit trail: NAME.log is the newest, NAME.1.log the one before, and so on. Paths
// are the system's; NAME, a path, stands without its ending. Any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "audit/AuditRecord.h"

namespace kalvex::audit {

// 0 is the newest.
std::string AuditFile(const std::string& name, int number);

// Those that are there, oldest first, as long as they are not turned over.
std::vector<std::string> AuditFiles(const std::string& name);

// Makes room for a new NAME.log: each file gets the next number. False with errno set; what has its
// number by then keeps it, and no file is lost.
bool TurnAuditFilesOver(const std::string& name);

// Removes the older files whose last line is from before that time. One without a line that tells a
// time stays.
void RemoveAuditFiles(const std::string& name, std::int64_t before);

struct AuditReading {
    std::uint64_t unreadable = 0;  // lines that are none of a trail, and do not look like old ones
    std::vector<std::string> faults = {};  // "PATH (reason)" of a file that could not be read
};

// Hands the entries of the files over, in this order, which is oldest first: those since that time,
// a script's alone when one is named, an engine text, with what concerns every script. `sink`
// answers false to have no more; a stop that is asked for ends the reading as well. All files are
// opened first, so they may be turned over or removed while it reads. A file of 10 million bytes
// takes some 0.4 s.
AuditReading ReadAudit(const std::vector<std::string>& files, std::int64_t since,
                       std::string_view script, const std::function<bool(const AuditEntry&)>& sink,
                       const std::stop_token& stop = {});

}  // namespace kalvex::audit

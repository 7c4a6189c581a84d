// Gives the server variables that scripts declare new names, from a list in a text file, in all
// scripts below a folder. Main thread. What a list says is engine text; paths are the system's.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/MainWindow.h"
#include "engine/ScriptText.h"
#include "platform/Clock.h"
#include "platform/LogSink.h"
#include "platform/Translator.h"

namespace kalvex::app {

struct CNameReplaceRecord {
    // Source, old name, new name, and three that the renaming does not use.
    std::array<std::string, 6> fields;
    bool used = false;  // a lookup has found it
};

class NameList {
  public:
    // Replaces the list by that of the file: a record a line, fields between tabs. Of two records
    // for one variable the first stays, and `repeated` hears of the other. False when the file
    // cannot be read.
    bool Load(const std::string& path,
              const std::function<void(const CNameReplaceRecord&)>& repeated);
    std::size_t Count() const { return m_records.size(); }
    // By source, "/", old name.
    const std::map<std::string, CNameReplaceRecord>& Records() const { return m_records; }
    // The names are compared as they stand. False, with nothing changed, for one that is not in the
    // list.
    bool Lookup(std::string_view source, std::string_view variable, std::string& newVariable,
                std::string& spare);

  private:
    std::map<std::string, CNameReplaceRecord> m_records;
};

// A script that has been opened for the renaming; it closes with this.
class RenamedScript {
  public:
    virtual ~RenamedScript() = default;
    virtual engine::ScriptText& Text() = 0;
    // To its file; false with the system's words in `error`.
    virtual bool Save(std::string& error) = 0;
};

// The person at the keyboard and the documents of the window. Texts are engine texts.
class RenamingDesk {
  public:
    virtual ~RenamingDesk() = default;
    // A path; nothing when the person wants none. The filter has names and patterns in turn, "|"
    // behind each.
    virtual std::optional<std::string> AskForFile(std::string_view filter) = 0;
    virtual std::optional<std::string> AskForFolder(std::string_view title) = 0;
    // As a document that is seen; null with the system's words in `error`.
    virtual std::unique_ptr<RenamedScript> Open(const std::string& path, std::string& error) = 0;
};

class NameReplacement {
  public:
    // Its log lies beside the log, in that folder. Nothing is owned; all of it outlives the work.
    struct Parts {
        const platform::Clock& clock;
        const platform::Translator& translator;
        platform::LogSink& log;  // hears of what the disk refuses
        MainWindow& window;
        RenamingDesk& desk;
        std::string logFolder;
    };

    explicit NameReplacement(Parts parts) : m_parts(std::move(parts)) {}

    // From the warning to the last box. Links to folders are not followed.
    void Run();

  private:
    class Journal;

    void Tell(const platform::Notice& notice);
    void RenameBelow(const std::string& folder, Journal& journal);
    void RenameIn(const std::string& path, Journal& journal);
    // Whether a line has been changed.
    bool RenameLines(engine::ScriptText& text, const std::string& path, Journal& journal);

    const Parts m_parts;
    NameList m_names;
};

}  // namespace kalvex::app

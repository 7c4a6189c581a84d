#include "programs/kalvex-convert/FileConversion.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>

#include "platform/Files.h"
#include "platform/posix/RegularFile.h"
#include "programs/ExitStatus.h"

namespace kalvex::convert {

namespace {

using platform::Translatable;

constexpr char32_t kFirstShown = 0xA0;  // a terminal obeys the controls below

// In the order of the kinds.
constexpr const char* kFaults[] = {
    Translatable("znaku %s nie ma w Windows-1250"),
    Translatable("bajt %s nie należy do żadnego znaku UTF-8"),
    Translatable("bajt %s nie jest znakiem Windows-1250"),
    Translatable("bajt %s: to nie jest tekst albo jest w UTF-16"),
};

std::string Shown(const text::EncodingFault& fault) {
    const auto value = static_cast<std::uint32_t>(fault.value);
    if (fault.kind != text::EncodingFaultKind::NoCounterpart) return fmt::format("0x{:02X}", value);
    const std::string code = fmt::format("U+{:04X}", value);
    return fault.value < kFirstShown ? code : fmt::format("{} ({})", fault.bytes, code);
}

class FileConversion {
  public:
    FileConversion(const ConvertOptions& options, const platform::Translator& translator)
        : m_options(options), m_translator(translator) {}

    bool Convert(const std::string& file) {
        std::string content;
        std::string error;
        if (!Read(file, content, error)) return Fail(file, error);
        const text::Converted converted = text::Convert(content, m_options.conversion);
        for (const text::EncodingFault& fault : converted.faults) Tell(file, fault);
        if (!converted.faults.empty()) return false;
        const bool changes = converted.text != content;
        if (m_options.check) {
            if (changes) Print(file + '\n');
            return !changes;
        }
        const std::string& target = m_options.output.empty() ? file : m_options.output;
        if (target == kStandardStream) return Print(converted.text);
        if (target == file && !changes) return true;
        return platform::WriteWholeFile(target, converted.text, error) || Fail(target, error);
    }

  private:
    static bool Read(const std::string& file, std::string& content, std::string& error) {
        if (file != kStandardStream) return platform::ReadWholeFile(file, content, error);
        if (platform::ReadToEnd(STDIN_FILENO, content)) return true;
        error = platform::FileFault(errno);
        return false;
    }

    static bool Print(std::string_view text) {
        return platform::WriteAll(STDOUT_FILENO, text) ||
               Fail(std::string(kStandardStream), platform::FileFault(errno));
    }

    static bool Fail(const std::string& file, const std::string& error) {
        fmt::print(stderr, "kalvex-convert: {}: {}\n", file, error);
        return false;
    }

    void Tell(const std::string& file, const text::EncodingFault& fault) const {
        const platform::Notice notice{kFaults[static_cast<std::size_t>(fault.kind)],
                                      {Shown(fault)}};
        fmt::print(stderr, "{}:{}:{}: {}\n", file, fault.line, fault.column,
                   platform::InWords(notice, m_translator));
    }

    const ConvertOptions& m_options;
    const platform::Translator& m_translator;
};

}  // namespace

int ConvertFiles(const ConvertOptions& options, const platform::Translator& translator) {
    FileConversion conversion(options, translator);
    bool done = true;
    for (const std::string& file : options.files) done = conversion.Convert(file) && done;
    return done ? programs::ExitDone : programs::ExitFailed;
}

}  // namespace kalvex::convert

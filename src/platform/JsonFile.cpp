#include "platform/JsonFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

#include "platform/Files.h"
#include "text/Encoding.h"
#include "text/ShellWord.h"

namespace kalvex::platform {

namespace {

constexpr std::size_t kDeepest = 64;

// Where the parser is. A number ends only with the sign behind it, which may stand on the next
// line, so a value's line is that of the last sign that is no blank.
struct Place {
    int lineReached = 1;
    int line = 1;
};

class TrackingIterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    TrackingIterator(const char* at, Place& place) : m_at(at), m_place(&place) {}

    reference operator*() const { return *m_at; }
    TrackingIterator& operator++() {
        if (*m_at == '\n') {
            ++m_place->lineReached;
        } else if (*m_at != ' ' && *m_at != '\t' && *m_at != '\r') {
            m_place->line = m_place->lineReached;
        }
        ++m_at;
        return *this;
    }
    bool operator==(const TrackingIterator& other) const { return m_at == other.m_at; }
    bool operator!=(const TrackingIterator& other) const { return m_at != other.m_at; }

  private:
    const char* m_at;
    Place* m_place;
};

std::string RangeWords(IntegerRange range) {
    if (range.greatest == INT64_MAX) return fmt::format("of at least {}", range.least);
    return fmt::format("from {} to {}", range.least, range.greatest);
}

// The words of the parser without its own name and place in front of them.
std::string FaultWords(std::string_view what) {
    if (const std::size_t name = what.find("] "); what.starts_with('[') && name != what.npos) {
        what.remove_prefix(name + 2);
    }
    if (what.starts_with("parse error at line ")) {
        if (const std::size_t place = what.find(": "); place != what.npos) {
            what.remove_prefix(place + 2);
        }
    }
    return std::string(what);
}

class TreeBuilder final : public nlohmann::json_sax<nlohmann::json> {
  public:
    TreeBuilder(JsonNode& root, const Place& place) : m_root(root), m_place(place) {}

    bool null() override { return Add({}); }
    bool boolean(bool value) override {
        return Add({.type = JsonNode::Type::Boolean, .boolean = value});
    }
    bool number_integer(number_integer_t value) override {
        return Add({.type = JsonNode::Type::Integer,
                    .integer = value,
                    .real = static_cast<double>(value)});
    }
    bool number_unsigned(number_unsigned_t value) override {
        if (value <= static_cast<number_unsigned_t>(INT64_MAX)) {
            return number_integer(static_cast<number_integer_t>(value));
        }
        return Add({.type = JsonNode::Type::Real, .real = static_cast<double>(value)});
    }
    bool number_float(number_float_t value, const string_t&) override {
        return Add({.type = JsonNode::Type::Real, .real = value});
    }
    bool string(string_t& value) override {
        return Add({.type = JsonNode::Type::Text, .text = std::move(value)});
    }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return Open(JsonNode::Type::Object); }
    bool key(string_t& name) override {
        m_open.back()->names.push_back(std::move(name));
        return true;
    }
    bool end_object() override { return Close(); }
    bool start_array(std::size_t) override { return Open(JsonNode::Type::Array); }
    bool end_array() override { return Close(); }
    bool parse_error(std::size_t, const std::string&,
                     const nlohmann::json::exception& error) override {
        m_fault = FaultWords(error.what());
        return false;
    }

    const std::string& GetFault() const { return m_fault; }

  private:
    bool Add(JsonNode node) {
        node.line = m_place.line;
        if (m_open.empty()) {
            m_root = std::move(node);
        } else {
            m_open.back()->items.push_back(std::move(node));
        }
        return true;
    }
    bool Open(JsonNode::Type type) {
        if (m_open.size() == kDeepest) {
            m_fault = fmt::format("brackets are more than {} deep", kDeepest);
            return false;
        }
        Add({.type = type});
        m_open.push_back(m_open.empty() ? &m_root : &m_open.back()->items.back());
        return true;
    }
    bool Close() {
        m_open.pop_back();
        return true;
    }

    JsonNode& m_root;
    const Place& m_place;
    std::vector<JsonNode*> m_open;  // only the last of them grows, so the others stay in place
    std::string m_fault;
};

}  // namespace

const JsonNode* JsonNode::Find(std::string_view name) const {
    const auto found = std::find(names.rbegin(), names.rend(), name);
    if (found == names.rend()) return nullptr;
    return &items[static_cast<std::size_t>(names.rend() - found - 1)];
}

bool JsonFile::Read(JsonNode& root) {
    std::string content;
    std::string error;
    if (!ReadWholeFile(m_path, content, error)) {
        m_fault = m_path + ": " + error;
        return false;
    }
    if (const std::optional<int> line = text::FindOtherLine(content)) {
        return FaultAt(*line,
                       "the file is not in UTF-8; this converts it: kalvex-convert --to utf-8 " +
                           text::ShellWord(m_path));
    }
    Place place;
    TreeBuilder builder(root, place);
    const TrackingIterator begin(content.data(), place);
    const TrackingIterator end(content.data() + content.size(), place);
    return nlohmann::json::sax_parse(begin, end, &builder) ||
           FaultAt(place.line, builder.GetFault());
}

const JsonNode* JsonFile::FindRequired(const JsonNode& object, std::string_view name) {
    const JsonNode* node = object.Find(name);
    if (node == nullptr) Fault(object, fmt::format("\"{}\" is missing", name));
    return node;
}

bool JsonFile::GetInteger(const JsonNode& object, std::string_view name, IntegerRange range,
                          std::int64_t& out) {
    const JsonNode* node = FindRequired(object, name);
    if (node == nullptr) return false;
    if (node->type != JsonNode::Type::Integer || node->integer < range.least ||
        node->integer > range.greatest) {
        return Fault(*node,
                     fmt::format("\"{}\" must be a whole number {}", name, RangeWords(range)));
    }
    out = node->integer;
    return true;
}

bool JsonFile::GetText(const JsonNode& object, std::string_view name, std::string& out) {
    const JsonNode* node = FindRequired(object, name);
    if (node == nullptr) return false;
    if (!Expect(*node, JsonNode::Type::Text, fmt::format("\"{}\" must be a text", name))) {
        return false;
    }
    out = node->text;
    return true;
}

bool JsonFile::Expect(const JsonNode& node, JsonNode::Type type, std::string_view what) {
    return node.type == type || Fault(node, what);
}

bool JsonFile::Fault(const JsonNode& place, std::string_view what) {
    return FaultAt(place.line, what);
}

bool JsonFile::FaultAt(int line, std::string_view what) {
    if (m_fault.empty()) m_fault = fmt::format("{}:{}: {}", m_path, line, what);
    return false;
}

}  // namespace kalvex::platform

#include "platform/JsonDocument.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

namespace kalvex {

namespace {

using Json = nlohmann::ordered_json;
using Pointer = Json::json_pointer;

// Reads a text for the parser and shows how far it has come.
class TrackedIterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    TrackedIterator(const char* at, const char** reached) : m_pAt(at), m_pReached(reached) {}
    reference operator*() const { return *m_pAt; }
    TrackedIterator& operator++() {
        *m_pReached = ++m_pAt;
        return *this;
    }
    bool operator==(const TrackedIterator& other) const { return m_pAt == other.m_pAt; }
    bool operator!=(const TrackedIterator& other) const { return m_pAt != other.m_pAt; }

  private:
    const char* m_pAt;
    const char** m_pReached;
};

// Follows the parser until it has read the wanted place, and then stops it.
class PlaceFinder : public nlohmann::json_sax<Json> {
  public:
    explicit PlaceFinder(const Pointer& wanted) : m_wanted(wanted) {}

    bool null() override { return Value(); }
    bool boolean(bool) override { return Value(); }
    bool number_integer(number_integer_t) override { return Value(); }
    bool number_unsigned(number_unsigned_t) override { return Value(); }
    bool number_float(number_float_t, const string_t&) override { return Value(); }
    bool string(string_t&) override { return Value(); }
    bool binary(binary_t&) override { return Value(); }
    bool start_object(std::size_t) override { return Enter(false); }
    bool end_object() override { return Leave(); }
    bool start_array(std::size_t) override { return Enter(true); }
    bool end_array() override { return Leave(); }
    bool key(string_t& key) override {
        m_levels.back().key = key;
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const Json::exception&) override {
        return false;
    }

  private:
    struct Level {
        bool array;
        std::size_t index;
        std::string key;
    };

    bool Found() const {
        Pointer place;
        for (const Level& level : m_levels) {
            if (level.array) {
                place /= level.index;
            } else {
                place /= level.key;
            }
        }
        return place == m_wanted;
    }

    bool Value() {
        if (Found()) return false;
        Next();
        return true;
    }

    bool Enter(bool array) {
        if (Found()) return false;
        m_levels.push_back({array, 0, {}});
        return true;
    }

    bool Leave() {
        m_levels.pop_back();
        Next();
        return true;
    }

    void Next() {
        if (!m_levels.empty()) ++m_levels.back().index;
    }

    const Pointer& m_wanted;
    std::vector<Level> m_levels;
};

}  // namespace

bool JsonDocument::Parse(std::string text, std::string& error) {
    m_strText = std::move(text);
    try {
        m_root = Json::parse(m_strText);
        return true;
    } catch (const Json::exception& fault) {
        const std::string words = fault.what();
        const std::size_t name = words.find("] ");  // the library's own name of the fault
        error = name == std::string::npos ? words : words.substr(name + 2);
        return false;
    }
}

int JsonDocument::LineOf(const Pointer& place) const {
    const char* begin = m_strText.data();
    const char* end = begin + m_strText.size();
    const char* reached = begin;
    PlaceFinder finder(place);
    Json::sax_parse(TrackedIterator(begin, &reached), TrackedIterator(end, &reached), &finder);
    // The parser reads one character past a number.
    while (reached > begin && (reached[-1] == '\n' || reached[-1] == '\r')) --reached;
    return static_cast<int>(std::count(begin, reached, '\n')) + 1;
}

}  // namespace kalvex

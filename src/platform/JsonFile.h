// JSON files of which every value knows its line, so that whoever reads one can tell a fault with
// its place. Texts are UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kalvex::platform {

struct JsonNode {
    enum class Type { Null, Boolean, Integer, Real, Text, Array, Object };

    // The member of that name of an object; null if there is none. Of like names the last counts.
    const JsonNode* Find(std::string_view name) const;

    Type type = Type::Null;
    int line = 1;  // the line of a text, number or opening bracket, counted from 1
    bool boolean = false;
    std::int64_t integer = 0;  // Integer: written without a point and an exponent, and in range
    double real = 0;           // Integer and Real
    std::string text = {};
    std::vector<JsonNode> items = {};     // an array's elements, the values of an object's members
    std::vector<std::string> names = {};  // of an object's members, in the order of `items`
};

struct IntegerRange {
    std::int64_t least;
    std::int64_t greatest = INT64_MAX;
};

// Takes values out of one file and keeps the first fault in words: "FILE:LINE: what is wrong".
// Every operation answers false when it has left a fault there.
class JsonFile {
  public:
    explicit JsonFile(std::string path) : m_path(std::move(path)) {}

    bool Read(JsonNode& root);

    // A member that must be there. Numbers are whole, and within the range.
    bool GetInteger(const JsonNode& object, std::string_view name, IntegerRange range,
                    std::int64_t& out);
    bool GetText(const JsonNode& object, std::string_view name, std::string& out);

    bool Expect(const JsonNode& node, JsonNode::Type type, std::string_view what);
    bool Fault(const JsonNode& place, std::string_view what);

    const std::string& GetFault() const { return m_fault; }

  private:
    const JsonNode* FindRequired(const JsonNode& object, std::string_view name);
    bool FaultAt(int line, std::string_view what);

    std::string m_path;
    std::string m_fault;
};

}  // namespace kalvex::platform

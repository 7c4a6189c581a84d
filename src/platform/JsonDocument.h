// JSON files written by people: the content, and for each part of it the line where it stands, so
// that a fault can be pointed out.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace kalvex {

class JsonDocument {
  public:
    // False with the line and what is wrong in `error` when the text (UTF-8) is no JSON.
    bool Parse(std::string text, std::string& error);

    // Members keep the order of the text.
    const nlohmann::ordered_json& Root() const { return m_root; }

    // The line, from 1, on which the value of that JSON pointer ends or, for an object or an array,
    // begins.
    int LineOf(const nlohmann::ordered_json::json_pointer& place) const;

  private:
    std::string m_strText;
    nlohmann::ordered_json m_root;
};

}  // namespace kalvex

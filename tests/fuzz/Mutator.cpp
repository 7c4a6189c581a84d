#include "fuzz/Mutator.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace kalvex::fuzz {

namespace {

constexpr std::size_t kMostChanges = 4;
constexpr std::size_t kLongestRun = 32;
constexpr std::size_t kLongestText = 65536;

// Bytes and numbers at the edges of what decoders tell apart.
constexpr std::string_view kEdges[] = {
    std::string_view("\0", 1),
    "\x01",
    "\x7f",
    "\x80",
    "\xff",
    std::string_view("\x80\x80\x80\x80\x10", 5),
    "\xff\xff\xff\xff\x07",
    "\xff\xff\xff\xff\x0f",
    "\xff\xff\xff\xff\xff\xff\xff\xff\x7f",
    "\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01",
    "\xc5\x82",
    "\xf0\x9f\x8c\x8d",
};

constexpr std::uint64_t kNumbers[] = {
    0,     1,      2,      6,          7,          22,         31,         120,
    160,   171,    190,    254,        255,        256,        4096,       65535,
    65536, 131072, 131073, 0x7fffffff, 0x80000000, 0xffffffff, 1ULL << 62, ~0ULL,
};

}  // namespace

void Mutator::ChangeBytes(std::string& text) {
    const std::size_t at = Below(text.size() + 1);
    const std::size_t run = std::min(Below(kLongestRun) + 1, text.size() - at);
    switch (Below(7)) {
        case 0:
            if (run > 0) text[at] = static_cast<char>(text[at] ^ (1 << Below(8)));
            break;
        case 1:
            if (run > 0) text[at] = static_cast<char>(Below(256));
            break;
        case 2:
            text.erase(at, run);
            break;
        case 3:
            text.insert(at, text.substr(at, run));
            break;
        case 4:
            text.insert(at, kEdges[Below(std::size(kEdges))]);
            break;
        case 5: {
            const std::string_view edge = kEdges[Below(std::size(kEdges))];
            text.replace(at, std::min(edge.size(), text.size() - at), edge);
            break;
        }
        default: {
            const std::string& other = Pick();
            text.replace(at, run, other, Below(other.size() + 1), Below(kLongestRun) + 1);
        }
    }
}

void Mutator::ChangeContent(WireField& field) {
    if (field.IsText()) {
        ChangeFields(field.content);
    } else if (field.IsNumber()) {
        field.content = WireNumber(kNumbers[Below(std::size(kNumbers))]);
    } else {
        field.content[Below(field.content.size())] = static_cast<char>(Below(256));
    }
}

void Mutator::ChangeFields(std::string& text) {
    std::vector<WireField> fields;
    if (!SplitFields(text, fields) || fields.empty()) return ChangeBytes(text);
    const std::size_t index = Below(fields.size());
    const auto at = fields.begin() + static_cast<std::ptrdiff_t>(index);
    switch (Below(10)) {
        case 0:
            fields.erase(at);
            break;
        case 1:
            fields.insert(at, WireField(*at));
            break;
        case 2:
            std::swap(*at, fields[Below(fields.size())]);
            break;
        case 3:
            at->tag = (at->tag & 7) | (Below(12) << 3);
            break;
        case 4: {
            std::vector<WireField> others;
            if (SplitFields(Pick(), others) && !others.empty()) {
                fields.insert(at, others[Below(others.size())]);
            }
            break;
        }
        default:
            ChangeContent(*at);
    }
    text = JoinFields(fields);
}

std::string Mutator::Next() {
    std::string text = Pick();
    if (Below(8) == 0) text += Pick();
    for (std::size_t change = Below(kMostChanges) + 1; change > 0; --change) {
        if (Below(8) == 0) {
            ChangeBytes(text);
        } else {
            ChangeFields(text);
        }
    }
    text.resize(std::min(text.size(), kLongestText));
    return text;
}

}  // namespace kalvex::fuzz

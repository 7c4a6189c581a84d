#include "platform/HttpHead.h"

#include <algorithm>
#include <cctype>

namespace kalvex::platform {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kHeadEnd = "\r\n\r\n";
constexpr std::string_view kContentLength = "content-length";

constexpr int kBadRequest = 400;
constexpr int kAddressTooLong = 414;
constexpr int kHeadersTooLong = 431;

// A library that takes a line feed for the end of a line would see another head than this one.
bool HasControls(std::string_view line) {
    return std::ranges::any_of(line, [](unsigned char c) { return c < ' ' && c != '\t'; });
}

bool IsContentLength(std::string_view name) {
    return std::ranges::equal(name, kContentLength, [](unsigned char a, unsigned char b) {
        return std::tolower(a) == b;
    });
}

std::string_view TakeLine(std::string_view& head) {
    const std::string_view line = head.substr(0, head.find(kLineEnd));
    head.remove_prefix(line.size() + kLineEnd.size());
    return line;
}

}  // namespace

std::size_t FindHttpContent(std::string_view request) {
    const std::size_t end = request.find(kHeadEnd);
    return end == std::string_view::npos ? end : end + kHeadEnd.size();
}

HttpHead BoundHttpHead(std::string_view head) {
    const std::size_t lineLength = std::min(head.find(kLineEnd), head.size());
    if (lineLength + kLineEnd.size() > kLongestRequestLine) return {kAddressTooLong};
    if (head.size() > kLongestHttpHead || !head.ends_with(kHeadEnd)) return {kHeadersTooLong};
    HttpHead bounded;
    const std::string_view request = TakeLine(head);
    if (HasControls(request)) return {kBadRequest};
    bounded.text.append(request).append(kLineEnd);
    std::size_t count = 0;
    for (std::string_view line; !(line = TakeLine(head)).empty();) {
        const std::size_t colon = line.find(':');
        if (++count > kMostHttpHeaders) return {kHeadersTooLong};
        if (colon == std::string_view::npos || HasControls(line)) return {kBadRequest};
        if (IsContentLength(line.substr(0, colon))) bounded.text.append(line).append(kLineEnd);
    }
    bounded.text.append(kLineEnd);
    return bounded;
}

}  // namespace kalvex::platform

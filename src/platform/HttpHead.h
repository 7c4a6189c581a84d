// The head of a request over HTTP, bounded before a library reads it. Any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kalvex::platform {

// In bytes, with line ends; a request with its content is no longer than the last.
inline constexpr std::size_t kLongestRequestLine = 1024;
inline constexpr std::size_t kLongestHttpHead = 8192;
inline constexpr std::size_t kLongestHttpRequest = 16384;
inline constexpr std::size_t kMostHttpHeaders = 64;

// Where the content begins; npos as long as the head has no end.
std::size_t FindHttpContent(std::string_view request);

struct HttpHead {
    int refusal = 0;        // the status with which it is refused; 0: it is not
    std::string text = {};  // the request line and those headers that count
};

// Of the headers only the length of the content counts. `head` ends with its empty line, or is too
// long without one.
HttpHead BoundHttpHead(std::string_view head);

}  // namespace kalvex::platform

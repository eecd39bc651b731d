// Base64 between -----BEGIN and -----END lines (RFC 7468).
#pragma once

#include <string>
#include <string_view>

namespace zr::tool {

// armour takes the lines of a text one by one. The first block counts; texts before and behind it, and header lines at
// its front (RFC 1421), do not.
class armour {
public:
    // Whether a line, without its end, is base64 of the block.
    bool take(std::string_view line);
    // Why the text is no armour; empty when it is. The line taken last is the place.
    const std::string& problem() const { return problem_; }
    // What makes the line taken last more, or other, than the one block that was read; empty when nothing does.
    const std::string& remark() const { return remark_; }
    // At the end: false when the block is not complete.
    bool finish();

private:
    enum class place { before, headers, inside, behind };

    place place_ = place::before;
    bool has_headers_ = false;
    std::string label_;
    std::string problem_;
    std::string remark_;
};

// Whether a text is one: a -----BEGIN line, and nothing but printable text before it.
bool has_armour(std::string_view text);

}  // namespace zr::tool

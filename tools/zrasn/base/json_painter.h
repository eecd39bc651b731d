// JSON in colours.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zr::tool {

// json_painter takes a text of JSON values in pieces and puts sequences that set colours into it, none of which is open
// across the end of a line: members' names, strings, numbers, and true, false and null each have theirs. It needs a bit
// for each level that is open.
class json_painter {
public:
    // Appends the piece to `painted`.
    void paint(std::string_view piece, std::string& painted);

private:
    enum class inside { nothing, string, word };

    std::vector<bool> objects_;  // of each open bracket, whether it is an object's
    inside inside_ = inside::nothing;
    bool escaped_ = false;    // the character before was a backslash in a string
    bool name_next_ = false;  // a string here is the name of a member
};

}  // namespace zr::tool

// The way to a member, such as "attrs[3].name".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zr::json {

// path_builder keeps a way of any length short: of a long one the middle is left out.
class path_builder {
public:
    void member(std::string_view name) {
        if (!head_.empty()) append(".");
        append(name);
    }
    void element(uint64_t index) { append("[" + std::to_string(index) + "]"); }

    std::string text() const {
        if (tail_.size() <= kept) return head_ + tail_;
        return head_ + " ... " + tail_.substr(tail_.find('.', tail_.size() - kept) + 1);
    }

private:
    static constexpr size_t kept = 120;

    void append(std::string_view part) {
        if (head_.size() < kept) {
            head_ += part;
            return;
        }
        tail_ += part;
        if (tail_.size() > 8 * kept) {
            tail_.erase(0, tail_.size() - 2 * kept);
        }
    }

    std::string head_;
    std::string tail_;
};

}  // namespace zr::json

#include "asn1/asnbase/octetstring.h"

#include <cstdlib>

#include "asn1/asnbase/default_value.h"

namespace {

// The open levels of a segmented string, and how the enclosing one goes on behind each.
class level_stack {
public:
    struct level {
        uint32_t end;              // offset of the octet behind a definite level; 0 when indefinite
        uint32_t remaining_after;  // octets that the enclosing level has left there; 0 when indefinite
        uint32_t in_indefinite;    // whether the enclosing level is
    };
    level_stack() = default;
    level_stack(const level_stack&) = delete;
    level_stack& operator=(const level_stack&) = delete;
    ~level_stack() { std::free(levels_); }

    bool empty() const { return count_ == 0; }
    const level& top() const { return levels_[count_ - 1]; }
    void pop() { --count_; }
    void push(level opened) {
        if (count_ == capacity_) {
            const size_t capacity = capacity_ == 0 ? 16 : capacity_ * 2;
            void* grown = std::realloc(levels_, capacity * sizeof *levels_);
            if (grown == nullptr) zr::throw_out_of_memory("Out of memory in asn_octetstring::decode_value");
            levels_ = static_cast<level*>(grown);
            capacity_ = capacity;
        }
        levels_[count_++] = opened;
    }

private:
    level* levels_ = nullptr;
    size_t count_ = 0;
    size_t capacity_ = 0;
};

class octet_gatherer : public zr::segment_sink {
public:
    explicit octet_gatherer(zr_buffer_t& contents) : contents_(contents) {}
    int on_segment(const unsigned char* octets, unsigned int len) override { return contents_.append(octets, len); }
    void on_complete() override { complete_ = contents_.length(); }

    // How many octets the complete segments have brought.
    unsigned int complete() const { return complete_; }

private:
    zr_buffer_t& contents_;
    unsigned int complete_ = 0;
};

}  // namespace

namespace zr {

int walk_segments(zr_r_buffer_t& input, bool indefinite, unsigned int len, unsigned int tag, segment_sink& sink) {
    zr_r_buffer_t cursor(input);
    if (!indefinite && !cursor.limit(len)) return zr_err_data_ends_early;
    level_stack levels;
    bool in_indefinite = indefinite;
    // A definite level ends where its length says, even when an identifier in it was counted and not passed (as
    // zrAsnGetType reads high tag numbers).
    unsigned char* const start = cursor.current();
    for (;;) {
        // Close every level that ends here.
        while (in_indefinite ? check_EOC(cursor) != 0 : cursor.remaining() == 0) {
            if (int status = sink.on_close(levels.empty())) return status;
            if (levels.empty()) {
                if (indefinite) {
                    input.move_to(cursor.current(), cursor.remaining());
                } else {
                    input.move_to(start + len, input.remaining() - len);
                }
                return 0;
            }
            const level_stack::level closed = levels.top();
            levels.pop();
            if (in_indefinite) {
                cursor.move_to(cursor.current() + 2, cursor.remaining() - 2);
            } else {
                cursor.move_to(start + closed.end, closed.remaining_after);
            }
            in_indefinite = closed.in_indefinite != 0;
            if (levels.empty()) sink.on_complete();
        }
        if (int status = sink.on_begin()) return status;
        ber_header header{};
        if (int status = read_identifier(cursor, header)) return status;
        if (header.tag != tag || header.cls != 0) return zr_err_no_match;
        bool definite = true;
        unsigned int length = 0;
        if (int status = read_length(cursor, definite, length)) return status;
        if (length > cursor.remaining()) return zr_err_data_ends_early;
        if (header.constructed != 0) {
            if (int status = sink.on_open()) return status;
            level_stack::level opened{0, 0, in_indefinite ? 1u : 0u};
            if (definite) {
                opened.end = static_cast<uint32_t>(cursor.current() - start) + length;
                opened.remaining_after = cursor.remaining() - length;
                cursor.move_to(cursor.current(), length);
            }
            levels.push(opened);
            in_indefinite = !definite;
            continue;
        }
        unsigned char* octets = nullptr;
        if (!cursor.take(length, octets)) return zr_err_data_ends_early;
        if (int status = sink.on_segment(octets, length)) return status;
        // A primitive segment of indefinite length reads as empty, like a whole string of that form.
        if (!definite) {
            if (check_EOC(cursor) == 0) return zr_err_bad_contents;
            cursor.move_to(cursor.current() + 2, cursor.remaining() - 2);
        }
        if (levels.empty()) sink.on_complete();
    }
}

}  // namespace zr

zr_asn_octetstring::zr_asn_octetstring(security_t secure) : zr_asn_primitive(secure), second_(secure), mode_(secure) {
    set_identity(secure, 4, "OCTETSTRING");
    permit_forms(1, 1, 1);
}

zr_asn_octetstring::~zr_asn_octetstring() = default;

int zr_asn_octetstring::set_value(const unsigned char* data, unsigned int len) {
    cache_.assign(data, len);
    encoding_valid_ = 1;
    return set_value_valid();
}

int zr_asn_octetstring::get_value(unsigned char*& data, unsigned int& len) const {
    return zr::read_value(
        *this,
        [&] {
            data = cache_.current();
            len = cache_.length();
            return zr_ok;
        },
        [&](const zr_asn_octetstring& standard) { return standard.get_value(data, len); });
}

int zr_asn_octetstring::set_default_value(zr_asn_object* value) { return zr_asn_object::set_default_value(value); }

int zr_asn_octetstring::set_default_value(const unsigned char* data, unsigned int len) {
    return zr::install_default<zr_asn_octetstring>(*this,
                                                   [&](zr_asn_octetstring& made) { return made.set_value(data, len); });
}

void zr_asn_octetstring::set_secure(security_t secure) {
    mode_ = secure;
    second_.set_security(secure);
    zr_asn_object::set_secure(secure);
}

int zr_asn_octetstring::decode_value(zr_r_buffer_t& input, unsigned int len) {
    cache_.rewrite(input);
    if (is_constructed() != 0) {
        octet_gatherer gatherer(cache_);
        const int status = zr::walk_segments(input, is_indefinite_length() != 0, len, 4, gatherer);
        cache_.truncate(gatherer.complete());
        if (status != 0) return status;
    } else {
        unsigned char* octets = nullptr;
        if (!input.take(len, octets)) return zr_err_data_ends_early;
        cache_.append(octets, len);
    }
    cache_.terminate();
    return set_value_valid();
}

int zr_asn_octetstring::encode_value(zr_buffer_t&) const { return 0; }

#include "asn1/codec/general_reader.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "asn1/ber.h"
#include "asn1/codec/record_codec.h"
#include "asn1/codec/values.h"
#include "asn1/codec/work_list.h"
#include "asn1/record/members.h"

namespace zr {

namespace {

// A record's structure in a block of its own that is read and given away.
struct dropped_deleter {
    const record_type* type;
    void operator()(void* structure) const {
        type->codec->release(structure);
        std::free(structure);
    }
};
using dropped_record = std::unique_ptr<void, dropped_deleter>;

// A record that has been entered, and the list or the slots of it that are being read.
struct level {
    unsigned char* structure;
    const record_type* type;
    uint32_t record_after;  // the scope of the record
    uint32_t list_after;    // the scope of the list
    uint32_t element;       // of the list: which one is to be read
    uint32_t room;          // of the list: elements that its array has room for
    uint32_t list_at;       // where the list begins
    uint16_t next;          // the field that is to be read
    bool record_indefinite;
    bool list_indefinite;
    bool in_list;
    bool dropped;  // the structure belongs to the level and goes with it
    bool unseen;   // it lies in a position behind the last slot: what its counts cannot hold is not missed

    const field& member() const { return type->fields[next]; }
    scope record_scope() const { return {record_after, record_indefinite}; }
    scope list_scope() const { return {list_after, list_indefinite}; }
    // What has been read was an element of the list or a member.
    void advance() {
        if (in_list) {
            ++element;
        } else {
            ++next;
        }
    }
};
static_assert(sizeof(level) <= 48, "levels are cheap");

class general_reader {
public:
    general_reader(input in, general_reading& reading) : in_(in), start_(in.at), reading_(reading) {}
    general_reader(const general_reader&) = delete;
    general_reader& operator=(const general_reader&) = delete;
    ~general_reader() {
        for (; !levels_.empty(); levels_.pop())
            release_dropped(levels_.top());
    }

    int run(const record_type& type, void* out) {
        int status = 0;
        try {
            status = open_record(type, out, false, false);
            while (status == 0 && !levels_.empty()) {
                const level& top = levels_.top();
                status = top.in_list                         ? read_element()
                         : top.next != top.type->field_count ? read_member()
                                                             : close_record();
            }
        } catch (const limit_passed&) {
            status = zr_err_out_of_memory;
        }
        reading_.behind = in_.at;
        return status != 0 ? refuse(status) : 0;
    }

private:
    void* make_structure(const record_type& type, const record_type& owner, holding held) {
        check_heap(type.size);
        void* made = std::calloc(1, type.size);
        if (made != nullptr) return made;
        if (held == holding::optional) throw_optional_memory_error(owner.module);
        throw_memory_error(owner.module);
    }

    // Reads a leaf at once, and makes another record the level that is read.
    int open_record(const record_type& type, void* structure, bool dropped, bool unseen) {
        dropped_record owned(dropped ? structure : nullptr, {&type});
        check(decode_limit::depth, levels_.size() + 1);
        if (type.codec->is_leaf && may_read_quickly(type)) {
            if (const unsigned char* behind = type.codec->read(in_.at, in_.end, structure)) {
                in_.at = behind;
                if (!levels_.empty()) levels_.top().advance();
                return 0;
            }
            type.codec->release(structure);
            std::memset(structure, 0, type.size);
        }
        scope entered{};
        if (int status = enter(entered)) return status;
        if (is_located()) return zr_err_bad_contents;
        level opened{};
        opened.structure = static_cast<unsigned char*>(structure);
        opened.type = &type;
        opened.record_after = entered.after;
        opened.record_indefinite = entered.indefinite;
        opened.dropped = dropped;
        opened.unseen = unseen;
        levels_.push(opened, type.module);
        static_cast<void>(owned.release());
        return 0;
    }
    // Octet for octet, where each one matters.
    bool may_read_quickly(const record_type& type) const {
        return reading_.limits == nullptr && reading_.locate == UINT32_MAX &&
               !(reading_.marks_texts && type.codec->has_texts());
    }
    // Whether what is looked for has been read.
    bool is_located() const { return offset() > reading_.locate; }
    // Ends the reading when a number passes its limit.
    struct limit_passed {};
    void check(decode_limit limit, uint64_t number) {
        if (reading_.limits == nullptr || number <= reading_.limits->most(limit)) return;
        reading_.passed = limit;
        throw limit_passed();
    }
    void check_heap(uint64_t more) { check(decode_limit::heap, heap_ += more); }

    int enter(scope& entered) {
        expected_ = expectation::value;
        tag_ = 16;
        return enter_sequence(in_, entered);
    }
    int close_record() {
        level& top = levels_.top();
        expected_ = top.record_indefinite ? expectation::end_of_contents : expectation::end_of_sequence;
        if (int status = leave_sequence(in_, top.record_scope())) return status;
        if (is_located()) return zr_err_bad_contents;
        release_dropped(top);
        levels_.pop();
        if (!levels_.empty()) levels_.top().advance();
        return 0;
    }
    static void release_dropped(level& top) {
        if (top.dropped) dropped_record(top.structure, {top.type}).reset();
        top.dropped = false;
    }

    int read_member() {
        level& top = levels_.top();
        const field& field = top.member();
        switch (field.held) {
            case holding::one:
                return read_one(field, place_at(field, top.structure, 0));
            case holding::optional: {
                if (!next_is(in_, tag_of_value(field.value))) {
                    top.advance();
                    return 0;
                }
                if (!is_by_pointer(field)) return read_one(field, place_at(field, top.structure, 0));
                void* made = make_structure(*field.record, *top.type, field.held);
                place<void*>(top.structure, field.offset) = made;
                return open_record(*field.record, made, false, top.unseen);
            }
            case holding::list:
            case holding::pointer_list:
            case holding::slots: {
                scope entered{};
                top.list_at = offset();
                if (int status = enter(entered)) return status;
                if (is_located()) return zr_err_bad_contents;
                top.list_after = entered.after;
                top.list_indefinite = entered.indefinite;
                top.in_list = true;
                top.element = 0;
                top.room = 0;
                if (is_list(field.held)) make_room(top, field);
                return 0;
            }
        }
        return zr_err_unsupported;
    }

    // Reads the value in a place, of the structure of the level that is read.
    int read_one(const field& field, void* where) {
        level& top = levels_.top();
        if (field.value == value_kind::record) return open_record(*field.record, where, false, top.unseen);
        expected_ = expectation::value;
        const uint32_t begin = offset();
        int status = 0;
        if (reading_.marks_texts && field.value == value_kind::text) {
            tag_ = 12;
            status = read_marked_text(in_, place<char*>(where, 0), offset());
        } else {
            status = read_value(in_, field, top.structure, where, tag_, top.type->module);
        }
        if (status != 0) return status;
        if (is_located()) return zr_err_bad_contents;
        if (has_block(field.value)) check_heap(offset() - begin);
        top.advance();
        return 0;
    }

    int read_element() {
        level& top = levels_.top();
        const field& field = top.member();
        if (at_end(in_, top.list_scope())) {
            if (is_list(field.held)) give_back(top, field);
            top.in_list = false;
            expected_ = expectation::end_of_sequence;
            if (int status = leave_sequence(in_, top.list_scope())) return status;
            if (is_located()) return zr_err_bad_contents;
            top.advance();
            return 0;
        }
        check(decode_limit::elements, ++elements_);
        if (field.held == holding::slots) return read_position(top, field);
        void* where = add_place(top, field);
        if (where == nullptr) return read_uncounted(top, field);
        if (field.held == holding::list) return read_one(field, where);
        void* made = make_structure(*field.record, *top.type, field.held);
        place<void*>(where, 0) = made;
        return open_record(*field.record, made, false, top.unseen);
    }

    // Positions behind the last slot are read and checked like the others, and dropped.
    int read_position(level& top, const field& field) {
        // An indefinite length may run out of octets: what is not there is no NULL, and no record.
        if (in_.at != in_.end && in_.at[0] != id_sequence && skip_null(in_)) {
            if (is_located()) return zr_err_bad_contents;
            top.advance();
            return 0;
        }
        const bool dropped = top.element >= field.size;
        void* made = make_structure(*field.record, *top.type, field.held);
        if (!dropped) place<void*>(place_at(field, top.structure, top.element), 0) = made;
        return open_record(*field.record, made, dropped, top.unseen || dropped);
    }

    // An element that the count cannot hold.
    int read_uncounted(const level& top, const field& field) {
        if (!top.unseen && top.list_at < reading_.uncounted.at) {
            reading_.uncounted = {top.list_at, top.type->module};
            expected_ = expectation::fewer_elements;
            describe(zr_err_out_of_memory);
        }
        if (field.value == value_kind::record)
            return open_record(*field.record, make_structure(*field.record, *top.type, field.held), true, top.unseen);
        void* dropped = nullptr;
        const int status = read_one(field, &dropped);
        drop_value(field, &dropped);
        return status;
    }

    // The array of a list is made for the elements that their headers promise, but for no more than the octets can
    // hold, and grows when there are more.
    void make_room(level& top, const field& field) {
        if (top.list_indefinite || in_.at == in_.end) return;
        const size_t least = field.record != nullptr ? field.record->codec->min_octets : 2;
        const size_t most = in_.left() / least + 1;
        const size_t counted = count_elements(in_.at, in_.end);
        resize(top, field, counted < most ? counted : most);
    }
    // The place of a new element, counted and all zero; null when the count cannot hold it.
    void* add_place(level& top, const field& field) {
        const uint32_t count = stored_count(field, top.structure);
        if (count == most_count(field)) return nullptr;
        if (count == top.room) resize(top, field, top.room == 0 ? 1 : size_t{top.room} * 2);
        void* where = place_at(field, top.structure, count);
        std::memset(where, 0, field.place_octets);
        store_count(field, top.structure, count + 1);
        return where;
    }
    // Gives back what growing has left over.
    static void give_back(level& top, const field& field) {
        const uint32_t count = stored_count(field, top.structure);
        if (count == top.room) return;
        auto*& array = place<void*>(top.structure, field.offset);
        if (void* shrunk = std::realloc(array, count * field.place_octets)) array = shrunk;
    }
    void resize(level& top, const field& field, size_t room) {
        auto*& array = place<void*>(top.structure, field.offset);
        if (room > most_count(field)) room = most_count(field);
        check_heap(uint64_t{room - top.room} * field.place_octets);
        void* grown = room <= SIZE_MAX / field.place_octets ? std::realloc(array, room * field.place_octets) : nullptr;
        if (grown == nullptr) throw_memory_error(top.type->module);
        array = grown;
        top.room = static_cast<uint32_t>(room);
    }

    uint32_t offset() const { return static_cast<uint32_t>(in_.at - start_); }

    // A slot that reads as neither NULL nor the record fits no alternative, whatever is wrong inside. A limit that is
    // passed says nothing about the octets.
    int refuse(int status) {
        for (const level& open : levels_) {
            const bool is_slot = open.in_list && open.member().held == holding::slots;
            if (is_slot && reading_.passed == decode_limit::none) status = zr_err_no_match;
        }
        describe(status);
        return status;
    }

    void describe(int status) {
        if (reading_.found == nullptr) return;
        reading_.found->status = status;
        reading_.found->offset = offset();
        reading_.found->left = static_cast<uint32_t>(in_.left());
        reading_.found->expected = expected_;
        reading_.found->tag = tag_;
        reading_.found->count_name = expected_ == expectation::fewer_elements ? levels_.top().member().count_name : "";
        describe_path();
    }

    // What a level adds to the path, of which there is room for `size` octets; 0 when it adds nothing.
    static size_t part_of(const level& open, char* to, size_t size) {
        if (open.next == open.type->field_count) return 0;
        const field& field = open.member();
        const int written = open.in_list ? std::snprintf(to, size, ".%s[%u]", field.name, open.element)
                                         : std::snprintf(to, size, ".%s", field.name);
        return static_cast<size_t>(written) < size ? static_cast<size_t>(written) : size - 1;
    }
    // Levels from the outermost as long as they take no more than half of the path; then, if there are more, from the
    // one on from which the others take no more than the rest.
    void describe_path() {
        constexpr size_t half = sizeof reading_.found->path / 2 - 8;
        char part[half];
        char* to = reading_.found->path;
        *to = '\0';
        const level* const end = levels_.end();
        const level* next = levels_.begin();
        const auto append = [&](size_t most) {
            for (; next != end; ++next) {
                const size_t count = part_of(*next, part, sizeof part);
                const char* first = to == reading_.found->path ? part + 1 : part;
                if (static_cast<size_t>(to - reading_.found->path) + count > most) return;
                if (count == 0) continue;
                const size_t copied = count - static_cast<size_t>(first - part);
                std::memcpy(to, first, copied);
                *(to += copied) = '\0';
            }
        };
        append(half);
        if (next == end) return;
        size_t last = 0;
        const level* tail = end;
        for (; tail != next; --tail) {
            const size_t count = part_of(tail[-1], part, sizeof part);
            if (last + count > half) break;
            last += count;
        }
        if (tail != next) {
            std::memcpy(to, " ... ", 6);
            to += 5;
            const size_t count = part_of(*tail, part, sizeof part);
            std::memcpy(to, part + 1, count);
            to += count - 1;
            next = tail + 1;
        }
        append(sizeof reading_.found->path - 1);
    }

    input in_;
    const unsigned char* const start_;
    general_reading& reading_;
    work_list<level> levels_;
    expectation expected_ = expectation::value;
    unsigned char tag_ = 16;  // of the value that is expected
    uint64_t elements_ = 0;
    uint64_t heap_ = 0;
};

}  // namespace

int read_any_form(const record_type& type, input in, void* out, general_reading& reading) {
    return general_reader(in, reading).run(type, out);
}

}  // namespace zr

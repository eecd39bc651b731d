// schema --against: whether these records, and those of another version, read each other's octets.
#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/file_output.h"
#include "base/library.h"
#include "input/input.h"
#include "json/base/text.h"
#include "json/base/text_output.h"
#include "json/describe/fields.h"
#include "json/document/events.h"
#include "verbs/verbs.h"

namespace zr::tool {

namespace {

// A member, or a record: what "records --json" says of it. What is not said is empty.
using said = std::map<std::string, std::string, std::less<>>;
struct shape {
    said about;
    std::vector<said> members;
};

// Takes what "records --json" writes: an array of objects, each with an array of objects.
class shapes_reader final : public json_events {
public:
    bool on(const json_event& event) override {
        switch (event.kind) {
            case json_kind::begin_array:
                return ++depth_ == 1 || depth_ == 3;
            case json_kind::begin_object:
                if (++depth_ == 2) shapes.emplace_back();
                if (depth_ == 4) shapes.back().members.emplace_back();
                return depth_ == 2 || depth_ == 4;
            case json_kind::end_array:
            case json_kind::end_object:
                --depth_;
                return true;
            case json_kind::key:
                key_ = event.text;
                return true;
            default:
                if (depth_ == 2) shapes.back().about[key_] = event.text;
                if (depth_ == 4) shapes.back().members.back()[key_] = event.text;
                return depth_ == 2 || depth_ == 4;
        }
    }

    std::vector<shape> shapes;

private:
    size_t depth_ = 0;
    std::string key_;
};

std::string of(const said& about, std::string_view key) {
    const auto found = about.find(key);
    return found == about.end() ? std::string() : found->second;
}

// The bits of an integer's type and whether it has a sign; 0 bits for what is none.
struct integer_shape {
    int bits;
    bool is_signed;
};
integer_shape integer_named(const std::string& type) {
    for (int bits : {8, 16, 32}) {
        if (type == "int" + std::to_string(bits) + "_t") return {bits, true};
        if (type == "uint" + std::to_string(bits) + "_t") return {bits, false};
    }
    return {0, false};
}

// Whether each number of the one type is one of the other.
bool holds(const std::string& wide, const std::string& narrow) {
    const integer_shape a = integer_named(wide), b = integer_named(narrow);
    return a.bits > b.bits && b.bits != 0 && (a.is_signed || !b.is_signed);
}

enum class reads { both_ways, old_by_new, breaking };

class shape_comparison {
public:
    explicit shape_comparison(output& out) : out_(out) {}

    void compare(const shape& before, const shape& now) {
        name_ = of(now.about, "name");
        const size_t both = std::min(before.members.size(), now.members.size());
        for (size_t i = 0; i != both; ++i)
            compare_member(before, now, i);
        for (size_t i = both; i < before.members.size(); ++i)
            tell(reads::breaking, i, "is gone: " + in_quotes(of(before.members[i], "name")));
        for (size_t i = both; i < now.members.size(); ++i) {
            const bool optional = of(now.members[i], "kind").compare(0, 9, "optional_") == 0;
            tell(optional ? reads::old_by_new : reads::breaking, i,
                 std::string(optional ? "is new and optional: " : "is new: ") + in_quotes(of(now.members[i], "name")));
        }
    }
    void gone(const std::string& name) {
        out_.write(in_quotes(name) + ": breaking: the record is gone\n");
        found_ = reads::breaking;
    }
    reads found() const { return found_; }

private:
    void tell(reads what, size_t index, const std::string& message) {
        static constexpr const char* words[] = {"compatible both ways", "new reads old", "breaking"};
        out_.write(name_ + ": " + words[static_cast<int>(what)] + ": member " + std::to_string(index + 1) + " " +
                   message + "\n");
        found_ = std::max(found_, what);
    }

    static bool has_member(const shape& in, const std::string& name) {
        return std::any_of(in.members.begin(), in.members.end(),
                           [&](const said& member) { return of(member, "name") == name; });
    }

    void compare_member(const shape& before, const shape& now, size_t i) {
        const said &old = before.members[i], &here = now.members[i];
        const std::string old_name = of(old, "name"), name = of(here, "name");
        if (old_name != name) {
            const bool moved = has_member(now, old_name) || has_member(before, name);
            tell(moved ? reads::breaking : reads::both_ways, i,
                 "was " + in_quotes(old_name) + ", is " + in_quotes(name) +
                     (moved ? ": another order" : ": only JSON and programs have its name"));
        }
        for (const char* key : {"kind", "type", "record", "size", "count_type"}) {
            const std::string was = of(old, key), is = of(here, key);
            if (was != is)
                tell(change(key, of(here, "kind"), was, is), i,
                     in_quotes(name) + ": " + key + " was " + in_quotes(was) + ", is " + in_quotes(is));
        }
        if (of(old, "secret") != of(here, "secret"))
            tell(reads::both_ways, i, in_quotes(name) + ": " + (of(old, "secret").empty() ? "is" : "was") + " secret");
    }

    static reads change(std::string_view key, const std::string& kind, const std::string& was, const std::string& is) {
        const auto is_list = [](const std::string& word) {
            return word == "list_of_records" || word == "list_of_pointers";
        };
        if (key == "kind" && is_list(was) && is_list(is)) return reads::both_ways;  // the same on the wire
        if (key == "kind" && (is == "optional_" + was)) return reads::old_by_new;
        if ((key == "type" || key == "count_type") && holds(is, was)) return reads::old_by_new;
        if (key == "size" && kind == "slots" && (was.size() < is.size() || (was.size() == is.size() && was < is)))
            return reads::old_by_new;
        return reads::breaking;
    }

    output& out_;
    std::string name_;
    reads found_ = reads::both_ways;
};

std::vector<shape> read_shapes(std::string_view text, const std::string& label) {
    shapes_reader reader;
    json_fault fault;
    if (!parse_json(text, reader, fault) || reader.shapes.empty())
        throw input_error{exit_io, label + ":" + std::to_string(fault.offset) +
                                       ": not what \"zrasn records --json\" writes" +
                                       (fault.message.empty() ? "" : ": " + fault.message)};
    return std::move(reader.shapes);
}

}  // namespace

int compare_schemas(const schema_options& options) {
    const octets_input in = read_input(options.against, input_form::raw, wanted_input::json);
    const std::vector<shape> before = read_shapes({reinterpret_cast<const char*>(in.data()), in.size()}, in.label());
    text_output fields;
    write_all_fields(fields);
    const std::vector<shape> now = read_shapes(fields.text(), "zrasn");
    std::map<std::string, const shape*, std::less<>> by_name;
    for (const shape& each : now)
        by_name[of(each.about, "name")] = &each;
    std::set<std::string_view> asked;
    for (const record_type* type : options.records)
        asked.insert(type->name);
    for (const record_module* module : options.modules)
        for (const record_type* type : *module)
            asked.insert(type->name);
    file_output out("");
    shape_comparison comparison(out);
    for (const shape& old : before) {
        const std::string name = of(old.about, "name");
        if (!asked.empty() && asked.count(name) == 0) continue;
        const auto here = by_name.find(name);
        here == by_name.end() ? comparison.gone(name) : comparison.compare(old, *here->second);
    }
    static constexpr const char* verdicts[] = {"compatible both ways\n",
                                               "new reads old: all readers first, then writers\n", "breaking\n"};
    out.write(verdicts[static_cast<int>(comparison.found())]);
    out.close();
    return comparison.found() == reads::both_ways    ? exit_good
           : comparison.found() == reads::old_by_new ? exit_deviates
                                                     : exit_refused;
}

}  // namespace zr::tool

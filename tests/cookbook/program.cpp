// Calls the pieces of the pages (run.sh). Prints what is wrong, and ends with 1 then.
#include "pieces.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "base_idls/attrlist_asn.h"
#include "base_idls/namevalue_asn.h"

namespace {

int failures = 0;
void expect(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "not so: %s\n", what);
    ++failures;
}

std::string text_of(const zr::encoding& octets) {
    return {reinterpret_cast<const char*>(octets.data()), octets.size()};
}
const unsigned char* octets_of(const std::string& text) { return reinterpret_cast<const unsigned char*>(text.data()); }

std::string list_of(const char* name) {
    zr::decoded<attrlist_s_t> list;
    zr::encoding octets;
    expect(zr::set_attribute(list.edit(), name, 4, "value") == 0 && zrAsnEncodeObj(octets.out(), *list) == 0, "a list");
    return text_of(octets);
}

void many_envelopes() {
    std::string all = list_of("one") + list_of("two") + list_of("three");
    all[all.find("two") - 2] = 2;  // the name is an INTEGER
    std::string names, reasons;
    const auto use = [&](const attrlist_s_t& list) { names += list.attrs[0].name; };
    const auto refuse = [&](const zr::decode_report& report, size_t at) {
        reasons += std::string(report.reason()) + " " + report.path + " " + std::to_string(all.find("two") - at) + ";";
    };
    expect(partial::read_all<attrlist_s_t>(octets_of(all), all.size() - 1, use, refuse) ==
               all.size() - list_of("three").size(),
           "the last envelope is cut off");
    expect(names == "one" && reasons == "no_match attrs[0].name 2;", reasons.c_str());
}

void an_edited_list() {
    zr::decoded<acl_ext_s_t> acl;
    zr::decoded<acl_entry_s_t> entry;
    for (int permission : {2, 1, 2})
        expect(zr::append(entry->permset, &acl_permset_s_t::perms, permission) == 0, "a permission");
    expect(zr::append(acl.edit(), &acl_ext_s_t::entries, std::move(entry)) == 0, "an entry");
    zr::encoding before, after;
    expect(zrAsnEncodeObj(before.out(), *acl) == 0 && edit::change(before.in(), after, "me", 2) == 0 &&
               zrAsnDecodeObj(after.in(), acl.out()) == 0,
           "the change");
    const acl_permset_s_t& left = acl->entries[0].permset;
    expect(left.count == 1 && left.perms[0] == 1 && zr::find_attribute(acl->ext, "owner") != nullptr, "what is left");
}

void signatures() {
    const std::string good = list_of("one");
    zr::decoded<attrlist_s_t> list;
    const auto verify = [&](const unsigned char*, size_t length) { return length >= good.size(); };
    expect(sign::decode_signed(octets_of(good), good.size(), verify, list) == 0 && list->attr_count == 1, "signed");
    const std::string more = good + "x";
    expect(sign::decode_signed(octets_of(more), more.size(), verify, list) == zr_err_trailing_data, "octets behind it");
    expect(sign::decode_signed(octets_of(good), 5, verify, list) == zr_err_bad_contents, "a wrong signature");
}

void a_walk() {
    std::string list = list_of("one").substr(4), shown;
    auto* octets = reinterpret_cast<unsigned char*>(&list[0]);
    const auto count = static_cast<unsigned>(list.size());
    expect(walk::walk(octets, count, 8, shown), "the walk");
    expect(shown == "16:25[16:23[16:21[12:3 16:14[16:12[2:1 12:5 4:0]]]]]", shown.c_str());
    shown.clear();
    expect(!walk::walk(octets, count, 2, shown) && !walk::walk(octets, count - 1, 8, shown), "too deep, or cut off");
}

void locales() {
    zr::decoded<sec_id_t> id, read;
    zr::encoding octets;
    expect(zr::set_text(id.edit(), &sec_id_t::name, "Z\xc3\xbcrich") == 0 && zrAsnEncodeObj(octets.out(), *id) == 0,
           "an id");
    expect(local::decode_in_locale("C", octets.in(), read.out()) == zr_err_conversion, "no such character in ASCII");
    expect(local::decode_in_locale("C.UTF-8", octets.in(), read.out()) == 0 && read->name[1] == '\xc3', "UTF-8");
}

void memory_and_secrets() {
    memory::arena blocks;
    unsigned int length = 0;
    expect(memory::write_number(blocks, 4711, length) == 0 && length == 4 && blocks.blocks != 0, "the arena");
    size_t sent = 0;
    expect(secure::send_passwords("before", "after", [&](const unsigned char*, size_t count) { sent = count; }) == 0 &&
               sent == 21,
           "the passwords");
    other_uuid_t id = {0x6b, 0xa7, 0xb8, 0x10, 0x9d, 0xad, 0x11, 0xd1, 0x80, 0xb4, 0, 0xc0, 0x4f, 0xd4, 0x30, 0xc8};
    const uuid_t made = uuid::from_octets(id);
    expect(made.time_low == 0x6ba7b810 && made.time_hi_and_version == 0x11d1 && made.node[5] == 0xc8, "the UUID");
}

void in_the_shadow() {
    const std::string one = list_of("one"), longer = one.substr(0, 4) + "\x30\x81" + one.substr(5);
    shadow::shadow_counts counts;
    for (const std::string& octets : {one, longer, one.substr(0, 9)})
        shadow::compare_in_shadow<attrlist_s_t>(octets_of(octets), octets.size(), counts);
    expect(counts.found == std::map<std::string, unsigned long>{{"same", 1}, {"other_octets", 1}, {"truncated", 1}},
           "the shadow");
}

// A list with a null element cannot be encoded, which is reported.
int fail() {
    namevalue_s_t* none[] = {nullptr};
    namevalueList_s_t list = {1, none};
    zr::encoding octets;
    return zrAsnEncodeObj(octets.out(), list);
}

// The table of what may be called where.
void elsewhere() {
    // A cancelled thread ends where the line is printed.
    pthread_t thread;
    void* result = nullptr;
    const auto body = [](void*) -> void* {
        pthread_cancel(pthread_self());
        fail();
        return nullptr;
    };
    expect(pthread_create(&thread, nullptr, body, nullptr) == 0 && pthread_join(thread, &result) == 0 &&
               result == PTHREAD_CANCELED,
           "a cancelled thread");
    const pid_t child = fork();
    if (child == 0) _exit(list_of("child").size() == list_of("other").size() ? 0 : 1);
    int status = -1;
    expect(waitpid(child, &status, 0) == child && status == 0, "a child");
    logging::count_instead_of_printing();
    expect(fail() == zr_err_out_of_memory && logging::out_of_memory == 1, "the sink");
}

void a_plug_in(const char* file) {
    void* const plug_in = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    if (plug_in == nullptr) return expect(false, dlerror());
    const auto count = reinterpret_cast<long (*)(const void*, size_t)>(dlsym(plug_in, "count_attributes"));
    const std::string octets = list_of("one");
    expect(count != nullptr && count(octets.data(), octets.size()) == 1 && count("x", 1) == -1, "the plug-in");
    dlclose(plug_in);
}

}  // namespace

int main(int, char** argv) {
    many_envelopes();
    an_edited_list();
    signatures();
    a_walk();
    locales();
    memory_and_secrets();
    in_the_shadow();
    elsewhere();
    a_plug_in(argv[1]);
    return failures == 0 ? 0 : 1;
}

// Prints how many nanoseconds of processor time decoding and releasing an access-control list takes, with the allocator
// that the process has (bench/allocators.sh).
#include <cstdio>
#include <ctime>
#include <string>

#include "base_idls/aclidl_asn.h"
#include "zrasn/attributes.h"

namespace {

constexpr unsigned rounds = 100000;

// A list of 16 entries and 4 attributes.
int fill(acl_ext_s_t& acl) {
    int status = zr::set_text(acl, &acl_ext_s_t::name, "payroll-documents");
    for (int i = 0; i < 16 && status == 0; ++i) {
        zr::decoded<acl_entry_s_t> entry;
        status = zr::set_text(entry->id, &sec_id_t::name, "payroll-clerks");
        if (status == 0) status = zr::append(entry->permset, &acl_permset_s_t::perms, i);
        if (status == 0) status = zr::append(acl, &acl_ext_s_t::entries, std::move(entry));
    }
    for (int i = 0; i < 4 && status == 0; ++i)
        status = zr::set_attribute(acl.ext, "attribute-" + std::to_string(i), 4, "a value of the attribute");
    return status;
}

double nanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

}  // namespace

int main() {
    zr::decoded<acl_ext_s_t> acl;
    zr::encoding octets;
    if (fill(acl.edit()) != 0 || zrAsnEncodeObj(octets.out(), *acl) != 0) return 1;
    const double before = nanoseconds();
    for (unsigned i = 0; i < rounds; ++i) {
        zr::decoded<acl_ext_s_t> copy;
        if (zrAsnDecodeObj(octets.in(), copy.out()) != 0) return 1;
    }
    std::printf("%.0f\n", (nanoseconds() - before) / rounds);
}

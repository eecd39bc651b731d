#include "refusal.h"

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

#include "asn1/asnbase/status.h"
#include "status_text.h"
#include "text.h"

namespace zr::tool {

refusal explain(const unsigned char* data, size_t size, size_t header_size, const record_type& type, int status) {
    (void)data, (void)size, (void)header_size, (void)type;
    return {status, 0, {}, status_text(status)};
}

void print_refusal(const octets_input& in, const record_type& type, const refusal& refusal, color_mode color) {
    (void)color;
    std::fprintf(stderr, "%s:%llu: %s: %s (%s, %d)\n", in.label().c_str(),
                 static_cast<unsigned long long>(refusal.offset),
                 refusal.path.empty() ? type.name : refusal.path.c_str(), refusal.message.c_str(),
                 status_name(refusal.status), refusal.status);
}

}  // namespace zr::tool

// A receiver of attribute lists from a stream socket. It waits while an envelope is not all there, and drops a peer at
// the first octet that the library would not have sent. The senders are in this program too; they send in pieces.
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "base_idls/attrlist_asn.h"
#include "zrasn/decode.h"

constexpr size_t most_octets = 1000;  // of an envelope

struct peer {
    std::vector<unsigned char> received;
    zr::envelope_framing frame{most_octets};
    zr::packed<attrlist_s_t> list;  // its block serves one envelope after the other
};

static void use(const attrlist_s_t& list) {
    for (uint32_t i = 0; i < list.attr_count; i++)
        std::printf("  received: %s\n", list.attrs[i].name);
}

// Reads what has come. False when the peer is to be dropped.
static bool serve(int socket, peer& from) {
    unsigned char piece[4096];
    const ssize_t count = recv(socket, piece, sizeof piece, 0);
    if (count <= 0) return false;
    from.received.insert(from.received.end(), piece, piece + count);

    zr::decode_options options;
    options.strict = true;
    options.limits.elements = 100;
    options.limits.heap = 16384;
    for (;;) {
        const zr::framing found = from.frame.look(from.received.data(), from.received.size());
        if (found == zr::framing::incomplete) return true;
        if (found == zr::framing::never) {
            std::printf("  dropped: no envelope of at most %zu octets\n", most_octets);
            return false;
        }
        zr::decode_report report;
        if (from.list.decode(from.received.data(), from.frame.length(), options, report) != 0) {
            const bool is_limit = report.passed != zr::decode_limit::none;
            std::printf("  dropped: %s%s at octet %u, in %s\n", report.name(), is_limit ? " (more than permitted)" : "",
                        static_cast<unsigned>(report.offset), report.path[0] != '\0' ? report.path : "the record");
            return false;
        }
        use(*from.list);
        from.received.erase(from.received.begin(), from.received.begin() + static_cast<long>(from.frame.length()));
        from.frame = zr::envelope_framing(most_octets);
    }
}

// A peer sends octets, some at a time.
static void converse(const char* who, const std::string& octets) {
    std::printf("%s:\n", who);
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, sockets) != 0) return std::perror("socketpair");
    peer from;
    bool goes_on = true;
    for (size_t at = 0; goes_on && at < octets.size(); at += 9) {
        const size_t count = std::min<size_t>(9, octets.size() - at);
        goes_on =
            send(sockets[0], octets.data() + at, count, 0) == static_cast<ssize_t>(count) && serve(sockets[1], from);
    }
    if (goes_on && !from.received.empty())
        std::printf("  %zu octets of an envelope left, %zu more are needed\n", from.received.size(),
                    from.frame.missing());
    close(sockets[0]);
    close(sockets[1]);
}

static std::string encoding_of(std::vector<attr_s_t> attrs) {
    attrlist_s_t list = {static_cast<uint32_t>(attrs.size()), attrs.data()};
    zr::encoding octets;
    if (zrAsnEncodeObj(octets.out(), list) != 0) return {};
    return {reinterpret_cast<const char*>(octets.data()), octets.size()};
}

int main() {
    char owner[] = "owner", members[] = "members", admin[] = "admin";
    const std::string two = encoding_of({{owner, 0, nullptr}, {members, 0, nullptr}});
    const std::string one = encoding_of({{admin, 0, nullptr}});

    converse("one list after the other", two + one);
    converse("one that stops in the middle", one + two.substr(0, 20));
    converse("a list, then something else", one + "GET / HTTP/1.0\r\n\r\n");
    std::string zero = one;
    zero[zero.find("admin") + 3] = '\0';
    converse("a text with a zero octet", zero);
    converse("too many", encoding_of(std::vector<attr_s_t>(101)));
}

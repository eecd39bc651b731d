// A tree of one's own, built from the runtime's classes:
//
//     Ticket ::= SEQUENCE {
//         serial  INTEGER,
//         rights  BIT STRING { read(0), write(1), delete(2), grant(8) },
//         ports   SEQUENCE OF INTEGER,
//         holder  CHOICE { user [0] OCTET STRING, group [1] INTEGER },
//         kind    INTEGER,
//         details ANY DEFINED BY kind      -- 1: INTEGER, the hours it is valid; 2: BOOLEAN, whether it is renewable
//     }
#include <cstdio>

#include "asn1/asnbase.h"

namespace {

enum right { read_it = 0, write_it = 1, delete_it = 2, grant_it = 8 };
enum ticket_kind { timed = 1, renewable = 2 };

class holder_t : public zr_asn_choice {
public:
    explicit holder_t(security_t mode) : zr_asn_choice(mode), user(mode), group(mode) {
        user.set_class(2);
        user.set_tag(0);
        group.set_class(2);
        group.set_tag(1);
        register_child(&user);
        register_child(&group);
    }

    zr_asn_octetstring user;
    zr_asn_integer group;
};

// The members are the ticket's own; registering them says only what it is made of, and in which order.
class ticket_t : public zr_asn_sequence {
public:
    explicit ticket_t(security_t mode)
        : zr_asn_sequence(mode),
          serial(mode),
          rights(mode),
          ports(mode),
          holder(mode),
          kind(mode),
          details(mode),
          hours(mode),
          renews(mode) {
        zr_asn_object* const members[] = {&serial, &rights, &ports, &holder, &kind, &details};
        for (zr_asn_object* member : members)
            register_child(member);
        details.set_preparse(bind_details);
    }

    // Called when `kind` has been read and `details` comes next.
    static int bind_details(zr_asn_any* any) {
        auto* ticket = static_cast<ticket_t*>(any->get_parent());
        long which = 0;
        if (int status = ticket->kind.get_value(which)) return status;
        if (which == timed) return any->set_syntax(&ticket->hours);
        if (which == renewable) return any->set_syntax(&ticket->renews);
        return any->set_syntax(nullptr);  // raw octets
    }

    zr_asn_integer serial;
    zr_asn_namedbits rights;
    zr_asn_sequenceof<zr_asn_integer> ports;
    holder_t holder;
    zr_asn_integer kind;
    zr_asn_any details;

    // What `details` may be.
    zr_asn_integer hours;
    zr_asn_boolean renews;
};

int fill(ticket_t& ticket) {
    ticket.serial.set_value(4711);
    ticket.rights.set_bit(read_it, 1);
    ticket.rights.set_bit(grant_it, 1);
    const long ports[] = {80, 443};
    for (const long port : ports) {
        zr_asn_integer* element = ticket.ports.add_child();  // the list owns it
        if (element == nullptr) return zr_err_out_of_memory;
        element->set_value(port);
    }
    ticket.holder.user.set_value(reinterpret_cast<const unsigned char*>("alice"), 5);
    ticket.holder.select(0);
    ticket.kind.set_value(timed);
    ticket.details.set_syntax(&ticket.hours);
    ticket.hours.set_value(12);
    // With a value behind it a bound ANY counts as absent; say that it is there.
    return ticket.details.set_value_valid();
}

void show(const ticket_t& ticket) {
    long number = 0;
    int bit = 0;
    unsigned char* octets = nullptr;
    unsigned int length = 0;
    if (ticket.serial.get_value(number) == 0) std::printf("serial %ld, rights", number);
    const struct {
        right which;
        const char* name;
    } names[] = {{read_it, "read"}, {write_it, "write"}, {delete_it, "delete"}, {grant_it, "grant"}};
    for (const auto& each : names) {
        if (ticket.rights.get_bit(each.which, bit) == 0 && bit != 0) std::printf(" %s", each.name);
    }
    std::printf(", ports");
    for (unsigned int i = 0; i < ticket.ports.get_child_count(); ++i) {
        if (ticket.ports[i]->get_value(number) == 0) std::printf(" %ld", number);
    }
    if (ticket.holder.selected() == 0 && ticket.holder.user.get_value(octets, length) == 0)
        std::printf(", user %.*s", static_cast<int>(length), reinterpret_cast<const char*>(octets));
    if (ticket.hours.get_value(number) == 0) std::printf(", for %ld hours", number);
    std::printf("\n");
}

void show_state(const ticket_t& ticket) {
    zr_buffer_t text(zr_normal);
    ticket.display_state_flags(text, 0);
    std::printf("%.*s", static_cast<int>(text.length()), reinterpret_cast<const char*>(text.data()));
}

int there_and_back() {
    ticket_t ticket(zr_normal);
    zr_buffer_t encoded(zr_normal);
    if (int status = fill(ticket)) return status;
    show_state(ticket);
    if (int status = ticket.asnwrite(encoded)) return status;
    for (unsigned int i = 0; i < encoded.length(); ++i)
        std::printf("%02x%s", encoded.data()[i], i % 16 == 15 || i + 1 == encoded.length() ? "\n" : " ");

    ticket_t copy(zr_normal);
    zr_r_buffer_t input(encoded.data(), encoded.length());
    if (int status = copy.asnread(input)) return status;
    show(copy);
    show_state(copy);
    return 0;
}

}  // namespace

int main() { return zr::guarded(there_and_back) == 0 ? 0 : 1; }

// One SEQUENCE and one CHOICE, whose members tests can reach.
#pragma once

#include <initializer_list>

#include "asn1/asnbase.h"

namespace zr_test {

// SEQUENCE { INTEGER, OCTET STRING OPTIONAL, BOOLEAN DEFAULT TRUE }
struct sample_sequence : zr_asn_sequence {
    explicit sample_sequence(security_t mode = zr_normal) : zr_asn_sequence(mode) {
        text.set_optional(1);
        flag.set_default_value(1);
        register_child(&number);
        register_child(&text);
        register_child(&flag);
    }
    zr_asn_integer number{zr_normal};
    zr_asn_octetstring text{zr_normal};
    zr_asn_boolean flag{zr_normal};
};

// CHOICE { [0] INTEGER, [1] BOOLEAN, [2] SEQUENCE { INTEGER } }
struct sample_choice : zr_asn_choice {
    explicit sample_choice(security_t mode = zr_normal) : zr_asn_choice(mode) {
        pair.register_child(&inner);
        unsigned int tag = 0;
        for (zr_asn_object* alternative : std::initializer_list<zr_asn_object*>{&number, &flag, &pair}) {
            alternative->set_class(2);
            alternative->set_tag(tag++);
            register_child(alternative);
        }
    }
    zr_asn_integer number{zr_normal}, inner{zr_normal};
    zr_asn_boolean flag{zr_normal};
    zr_asn_sequence pair{zr_normal};
};

}  // namespace zr_test

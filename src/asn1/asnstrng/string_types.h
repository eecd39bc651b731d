// The seven ASN.1 string types (X.680 41) and DirectoryString (X.520), the choice of them.
#pragma once

#include "asn1/asnstrng/charstring.h"

// Each of these holds texts in the one code set that it is named after. This one: IA5String, ASCII.
class ZR_API zr_asn_ia5String : public zr_asn_charstring {
public:
    explicit zr_asn_ia5String(security_t secure);
    ~zr_asn_ia5String() override;
    int check_accepted_codeset(unsigned int codeset) const override { return codeset == zr_ia5 ? 1 : 0; }
    int is_polymorphic() const override { return 0; }
};

// PrintableString.
class ZR_API zr_asn_printableString : public zr_asn_charstring {
public:
    explicit zr_asn_printableString(security_t secure);
    ~zr_asn_printableString() override;
    int check_accepted_codeset(unsigned int codeset) const override { return codeset == zr_printable ? 1 : 0; }
    int is_polymorphic() const override { return 0; }
};

// VisibleString.
class ZR_API zr_asn_visibleString : public zr_asn_charstring {
public:
    explicit zr_asn_visibleString(security_t secure);
    ~zr_asn_visibleString() override;
    int check_accepted_codeset(unsigned int codeset) const override { return codeset == zr_visible ? 1 : 0; }
    int is_polymorphic() const override { return 0; }
};

// TeletexString, in T.61.
class ZR_API zr_asn_teletexString : public zr_asn_charstring {
public:
    explicit zr_asn_teletexString(security_t secure);
    ~zr_asn_teletexString() override;
    int check_accepted_codeset(unsigned int codeset) const override { return codeset == zr_t61 ? 1 : 0; }
    int is_polymorphic() const override { return 0; }
};

// BMPString: two octets a character.
class ZR_API zr_asn_bmpString : public zr_asn_charstring {
public:
    explicit zr_asn_bmpString(security_t secure);
    ~zr_asn_bmpString() override;
    int check_accepted_codeset(unsigned int codeset) const override { return codeset == zr_bmp ? 1 : 0; }
    int is_polymorphic() const override { return 0; }
};

// UniversalString: four octets a character.
class ZR_API zr_asn_universalString : public zr_asn_charstring {
public:
    explicit zr_asn_universalString(security_t secure);
    ~zr_asn_universalString() override;
    int check_accepted_codeset(unsigned int codeset) const override { return codeset == zr_universal ? 1 : 0; }
    int is_polymorphic() const override { return 0; }
};

// UTF8String.
class ZR_API zr_asn_UTF8String : public zr_asn_charstring {
public:
    explicit zr_asn_UTF8String(security_t secure);
    ~zr_asn_UTF8String() override;
    int check_accepted_codeset(unsigned int codeset) const override { return codeset == zr_utf8 ? 1 : 0; }
    int is_polymorphic() const override { return 0; }
};

// zr_asn_directoryString holds texts in any of the seven code sets, and prefers printable, T.61, universal and UTF-8. A
// fresh one is printable.
class ZR_API zr_asn_directoryString : public zr_asn_charstring {
public:
    explicit zr_asn_directoryString(security_t secure);
    ~zr_asn_directoryString() override;

    // Input is recognised in all code sets but visible (26): kept so.
    int check_type(unsigned int tag, int cls) const override;
    // normalize converts the text in place to the preferred code set, else to the first that can hold it.
    int normalize() override;
    int check_accepted_codeset(unsigned int codeset) const override;
    int check_preferred_codeset(unsigned int codeset) const override;

    // set_preferred_codeset converts the text in place to printable where that can be; nothing is recorded then. Else
    // it converts it to `codeset` (12, 20, 28 or 30; any other gives -1) and records that on success. Returns the last
    // conversion's status.
    int set_preferred_codeset(unsigned int codeset);
};

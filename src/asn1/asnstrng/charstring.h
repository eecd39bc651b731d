// The base of the character strings.
#pragma once

#include "asn1/asnbase/octetstring.h"
#include "asn1/asnstrng/code_sets.h"

// zr_asn_charstring is an OCTET STRING that carries a text in one of seven code sets (zr_code_set) and converts it
// between them. The tag of an object names the code set of its text. This class accepts no code set; those of
// asn1/asnstrng/string_types.h do.
//
// The text is not the contents octets: set_value_uninterpreted, set_value_X, get_value_X and convert2X work on the text
// and leave the contents, the octet string's set_value, get_value and decoding work on the contents and leave the text.
// Kept so: what is to be encoded is set with the octet string's set_value.
//
// Operations return 0; 275063211 when a character has no form in the code set asked for; 275063212 when the class does
// not accept the code set; 275063200 when a text is read that is absent and has no default. An absent string with a
// default reads as the default's text, as empty when the default is not a character string.
class ZR_API zr_asn_charstring : public zr_asn_octetstring {
public:
    explicit zr_asn_charstring(security_t secure);
    ~zr_asn_charstring() override;

    // Sets the code set: a string's tag is always one that it accepts.
    int set_tag(unsigned int tag) override;
    int is_polymorphic() const override;

    // Both: whether a text in the code set can be held, and whether it is chosen of its own accord: 1 or 0.
    virtual int check_accepted_codeset(unsigned int codeset) const;
    virtual int check_preferred_codeset(unsigned int codeset) const;
    // set_codeset names the code set of the text, which is not converted.
    virtual int set_codeset(unsigned int codeset);

    // The C forms take and give 7-bit C strings. set_value_C chooses the code set; octets above 7F fail. get_value_C
    // puts `replacement` in the place of each octet of `out` above 7F; without one (0) it empties `out` and fails.
    virtual int get_value_C(zr_buffer_t& out, char replacement) const;
    virtual int set_value_C(char* text);

    // The getters append the text in their code set to `out`. The setters store the octets as they are, unchecked, in
    // their code set; null counts as empty. set_value_IA5 chooses the code set of its text when `interpret` is not 0.
    virtual int get_value_IA5(zr_buffer_t& out) const;
    virtual int set_value_IA5(char* text, int interpret);
    virtual int set_value_IA5(zr_r_buffer_t& text, int interpret);
    virtual int get_value_printable(zr_buffer_t& out) const;
    virtual int set_value_printable(char* text);
    virtual int set_value_printable(zr_r_buffer_t& text);
    virtual int get_value_visible(zr_buffer_t& out) const;
    virtual int set_value_visible(char* text);
    virtual int set_value_visible(zr_r_buffer_t& text);
    virtual int get_value_T61(zr_buffer_t& out) const;
    virtual int set_value_T61(char* text);
    virtual int set_value_T61(zr_r_buffer_t& text);
    virtual int get_value_BMP(zr_buffer_t& out) const;
    // 16-bit units up to a zero unit, stored in host order.
    virtual int set_value_BMP(unsigned short* text);
    virtual int set_value_BMP(zr_r_buffer_t& text);
    // 32-bit units.
    virtual int get_value_Univ(zr_buffer_t& out) const;
    // The first of both stores an empty text whatever the array holds: kept so.
    virtual int set_value_Univ(unsigned int* text);
    virtual int set_value_Univ(zr_r_buffer_t& text);
    // These take and give UTF-8 like the forms above.
    virtual int get_value_UTF8(zr_buffer_t& out) const;
    virtual int set_value_UTF8(char* text);
    virtual int set_value_UTF8(zr_r_buffer_t& text);
    // The code set of the text.
    virtual unsigned int get_codeset() const;

    // set_value_uninterpreted replaces the text and leaves the code set.
    int set_value_uninterpreted(const char* data, unsigned int len);
    int set_value_uninterpreted(zr_r_buffer_t& text);

    // In place: 0 at once when the text is in the code set already; the text is replaced only on success. Two of them
    // name another code set afterwards, kept so: convert2visible printable (19), convert2UTF8 universal (28).
    int convert2IA5();
    int convert2printable();
    int convert2visible();
    int convert2T61();
    int convert2BMP();
    int convert2Univ();
    int convert2UTF8();

    // Appended to `out`; the object is unchanged. What a failed conversion leaves in `out` is as with its converters.
    int convert2IA5(zr_buffer_t& out) const;
    int convert2printable(zr_buffer_t& out) const;
    int convert2visible(zr_buffer_t& out) const;
    int convert2T61(zr_buffer_t& out) const;
    int convert2BMP(zr_buffer_t& out) const;
    int convert2Univ(zr_buffer_t& out) const;
    int convert2UTF8(zr_buffer_t& out) const;

protected:
    // What every concrete constructor states.
    void set_kind(const char* type_name, unsigned int codeset);

    // A text and its code set.
    struct text_source {
        zr_r_buffer_t text;    // where it begins
        unsigned int codeset;  // what its octets mean
    };
    // The text that is read: this object's, or its default's.
    int find_text(text_source& source) const;
    // Both forms of convert2X for the code set X.
    int convert_in_place(unsigned int target);
    int convert_to(unsigned int target, zr_buffer_t& out) const;

    uint32_t codeset_ = 0;
    int32_t preferred_codeset_ = 0;  // 0: none

private:
    int store(unsigned int codeset, zr_r_buffer_t& text);
    int store_if_accepted(unsigned int codeset, zr_r_buffer_t& text);
    unsigned int choose(const zr_code_set (&candidates)[7], const zr_r_buffer_t& ia5, zr_buffer_t& chosen) const;
};

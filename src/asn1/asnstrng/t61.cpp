#include <array>

#include "asn1/asnstrng/converters.h"
#include "asn1/asnstrng/text_writer.h"
#include "asn1/status.h"

namespace {

// In all tables 0 is what has no counterpart; U+0000 itself has none.

// The control octets that both directions copy.
constexpr unsigned char controls[] = {0x08, 0x0A, 0x0C, 0x0D, 0x1A};

// Octets that are the same in T.61 and in ISO 8859-1, above the letters.
constexpr unsigned char same_octets[] = {0xA1, 0xA2, 0xA3, 0xA5, 0xA7, 0xAB, 0xB0, 0xB1, 0xB2,
                                         0xB3, 0xB5, 0xB6, 0xB7, 0xBB, 0xBC, 0xBD, 0xBE, 0xBF};

struct letter_row {
    unsigned char prefix;   // of T.61
    const char* letters;    // that the accent goes with
    uint16_t composed[24];  // what each of them becomes
};

constexpr letter_row accents[] = {
    // grave
    {0xC1, "AEIOU", {0x00C0, 0x00C8, 0x00CC, 0x00D2, 0x00D9}},
    {0xC1, "aeiou", {0x00E0, 0x00E8, 0x00EC, 0x00F2, 0x00F9}},
    // acute
    {0xC2,
     "ACEILNORSUYZ",
     {0x00C1, 0x0106, 0x00C9, 0x00CD, 0x0139, 0x0143, 0x00D3, 0x0154, 0x015A, 0x00DA, 0x00DD, 0x0179}},
    {0xC2,
     "aceilnorsuyz",
     {0x00E1, 0x0107, 0x00E9, 0x00ED, 0x013A, 0x0144, 0x00F3, 0x0155, 0x015B, 0x00FA, 0x00FD, 0x017A}},
    // circumflex
    {0xC3,
     "ACEGHIJOSUWY",
     {0x00C2, 0x0108, 0x00CA, 0x011C, 0x0124, 0x00CE, 0x0134, 0x00D4, 0x015C, 0x00DB, 0x0174, 0x0176}},
    {0xC3,
     "aceghijosuwy",
     {0x00E2, 0x0109, 0x00EA, 0x011D, 0x0125, 0x00EE, 0x0135, 0x00F4, 0x015D, 0x00FB, 0x0175, 0x0177}},
    // tilde
    {0xC4, "AINOU", {0x00C3, 0x0128, 0x00D1, 0x00D5, 0x0168}},
    {0xC4, "ainou", {0x00E3, 0x0129, 0x00F1, 0x00F5, 0x0169}},
    // macron: capital A is left out on purpose
    {0xC5, "EIOU", {0x0112, 0x012A, 0x014C, 0x016A}},
    {0xC5, "aeiou", {0x0101, 0x0113, 0x012B, 0x014D, 0x016B}},
    // breve: capital A is left out on purpose
    {0xC6, "EGIOU", {0x0114, 0x011E, 0x012C, 0x014E, 0x016C}},
    {0xC6, "aegiou", {0x0103, 0x0115, 0x011F, 0x012D, 0x014F, 0x016D}},
    // dot above
    {0xC7, "CEGIZ", {0x010A, 0x0116, 0x0120, 0x0130, 0x017B}},
    {0xC7, "cegz", {0x010B, 0x0117, 0x0121, 0x017C}},
    // diaeresis, under two octets
    {0xC8, "AEIOUY", {0x00C4, 0x00CB, 0x00CF, 0x00D6, 0x00DC, 0x0178}},
    {0xC8, "aeiouy", {0x00E4, 0x00EB, 0x00EF, 0x00F6, 0x00FC, 0x00FF}},
    {0xC9, "AEIOUY", {0x00C4, 0x00CB, 0x00CF, 0x00D6, 0x00DC, 0x0178}},
    {0xC9, "aeiouy", {0x00E4, 0x00EB, 0x00EF, 0x00F6, 0x00FC, 0x00FF}},
    // ring
    {0xCA, "AUau", {0x00C5, 0x016E, 0x00E5, 0x016F}},
    // cedilla
    {0xCB, "CGKLNRST", {0x00C7, 0x0122, 0x0136, 0x013B, 0x0145, 0x0156, 0x015E, 0x0162}},
    {0xCB, "cgklnrst", {0x00E7, 0x0123, 0x0137, 0x013C, 0x0146, 0x0157, 0x015F, 0x0163}},
    // 0xCC is an accent that goes with no letter
    // double acute
    {0xCD, "OUou", {0x0150, 0x0170, 0x0151, 0x0171}},
    // ogonek: capital A is left out on purpose
    {0xCE, "EIUaeiu", {0x0118, 0x012E, 0x0172, 0x0105, 0x0119, 0x012F, 0x0173}},
    // caron: small n becomes U+0048 on purpose
    {0xCF, "CDELNRSTZ", {0x010C, 0x010E, 0x011A, 0x013D, 0x0147, 0x0158, 0x0160, 0x0164, 0x017D}},
    {0xCF, "cdelnrstz", {0x010D, 0x010F, 0x011B, 0x013E, 0x0048, 0x0159, 0x0161, 0x0165, 0x017E}},
};

struct octet_row {
    unsigned char first;  // octet; the others follow it
    uint16_t becomes[16];
};

// T.61 to BMP, beside ASCII, the controls and the same octets. The Greek letters at E0, F0 and F3 are on purpose.
constexpr octet_row t61_octets[] = {
    {0x24, {0x00A4}},
    {0xA4, {0x0024}},
    {0xA6, {0x0023}},
    {0xA8, {0x00A4}},
    {0xB4, {0x00D7}},
    {0xB8, {0x00F7}},
    {0xE0, {0x03A9, 0x00C6, 0x00D0, 0x00AA, 0x0126}},
    {0xE6, {0x0132, 0x013F, 0x0141, 0x00D8, 0x0152, 0x00BA, 0x00DE, 0x0166, 0x014A, 0x0149}},
    {0xF0,
     {0x039A, 0x00E6, 0x0111, 0x03B4, 0x0127, 0x0131, 0x0133, 0x0140, 0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x0167,
      0x014B}},
};

// ISO 8859-1 to T.61, beside the same: one octet, or an accent and its letter. F0 becomes F2 on purpose, though T.61 to
// BMP reads that as U+0111.
constexpr octet_row ia5_octets[] = {
    {0x23, {0xA6, 0xA4}},
    {0xA4, {0xA8}},
    {0xBA, {0xEB}},
    {0xC0, {0xC141, 0xC241, 0xC341, 0xC441, 0xC841, 0xCA41, 0xE1, 0xCB43}},
    {0xC8, {0xC145, 0xC245, 0xC345, 0xC845, 0xC149, 0xC249, 0xC349, 0xC849}},
    {0xD0, {0xE2, 0xC44E, 0xC14F, 0xC24F, 0xC34F, 0xC44F, 0xC84F, 0xB4}},
    {0xD8, {0xE9, 0xC155, 0xC255, 0xC355, 0xC855, 0xC259, 0xEC, 0xFB}},
    {0xE0, {0xC161, 0xC261, 0xC361, 0xC461, 0xC861, 0xCA61, 0xF1, 0xCB63}},
    {0xE8, {0xC165, 0xC265, 0xC365, 0xC865, 0xC169, 0xC269, 0xC369, 0xC869}},
    {0xF0, {0xF2, 0xC46E, 0xC16F, 0xC26F, 0xC36F, 0xC46F, 0xC86F, 0xB8}},
    {0xF8, {0xF9, 0xC175, 0xC275, 0xC375, 0xC875, 0xC279, 0xFC, 0xC879}},
};

using octet_table = std::array<uint16_t, 256>;

template <size_t N>
constexpr octet_table octets_with(const octet_row (&rows)[N]) {
    octet_table table{};
    for (const unsigned char octet : controls)
        table[octet] = octet;
    for (unsigned int octet = 0x20; octet <= 0x7E; ++octet)
        table[octet] = static_cast<uint16_t>(octet);
    for (const unsigned char octet : same_octets)
        table[octet] = octet;
    for (const octet_row& row : rows)
        for (unsigned int i = 0; i < 16 && row.becomes[i] != 0; ++i)
            table[row.first + i] = row.becomes[i];
    return table;
}

constexpr unsigned int first_accent = 0xC1;
constexpr unsigned int last_accent = 0xCF;

using composition_table = std::array<std::array<uint16_t, 128>, last_accent - first_accent + 1>;

constexpr composition_table compose() {
    composition_table table{};
    for (const letter_row& row : accents)
        for (unsigned int i = 0; row.letters[i] != '\0'; ++i)
            table[row.prefix - first_accent][static_cast<unsigned char>(row.letters[i])] = row.composed[i];
    return table;
}

constexpr octet_table t61_to_bmp = octets_with(t61_octets);
constexpr octet_table ia5_to_t61 = octets_with(ia5_octets);
constexpr composition_table compositions = compose();

constexpr bool is_control(unsigned int octet) { return octet < 0x20 && t61_to_bmp[octet] != 0; }
constexpr bool is_accent(unsigned int octet) { return octet >= first_accent && octet <= last_accent; }

}  // namespace

int T612BMP(const zr_r_buffer_t& in, zr_buffer_t& out) {
    zr::octet_reader octets(in);
    zr::text_writer writer(out);
    unsigned int accent = 0;  // pending; at the end it is dropped
    while (!octets.at_end()) {
        const unsigned int octet = octets.next();
        if (is_accent(octet) && accent == 0) {
            accent = octet;
            continue;
        }
        uint16_t value = t61_to_bmp[octet];
        if (accent != 0 && !is_control(octet)) value = octet < 0x80 ? compositions[accent - first_accent][octet] : 0;
        if (value == 0) {
            writer.reset();
            return zr_err_conversion;
        }
        writer.put(value >> 8);
        writer.put(value);
        accent = 0;
    }
    return 0;
}

int T612IA5(const zr_r_buffer_t& in, zr_buffer_t& out) {
    zr_buffer_t bmp(zr_secure);  // may hold a secret
    const int status = T612BMP(in, bmp);
    return status != 0 ? status : BMP2IA5(bmp, out);
}

int IA52T61(const zr_r_buffer_t& in, zr_buffer_t& out) {
    zr::octet_reader octets(in);
    zr::text_writer writer(out);
    while (!octets.at_end()) {
        const uint16_t value = ia5_to_t61[octets.next()];
        if (value == 0) {
            writer.reset();
            return zr_err_conversion;
        }
        if (value > 0xFF) writer.put(value >> 8);
        writer.put(value);
    }
    return 0;
}

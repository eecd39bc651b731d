#include "asn1/zrasnbase.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "asn1/asnutils.h"
#include "asn1/envelope.h"

zr_asnbase::zr_asnbase(security_t secure) : zr_asn_sequence(secure) {}
zr_asnbase::~zr_asnbase() = default;

int zr_asnbase::set_default_value(zr_asn_object* value) { return zr_asn_object::set_default_value(value); }

int zr_asnbase::set_default_value() {
    auto* made = new (std::nothrow) zr_asnbase(zr_normal);
    if (made == nullptr) zr::throw_out_of_memory("Out of memory in asn_object::set_default_value");
    return zr_asn_object::set_default_value(made);
}

int zr_asnbase::saveEncoding(zr_asn_object& object, int version, zr_asn_buffer_t& out) {
    zr_buffer_t buffer(zr_normal);
    unsigned char header[zr::envelope_header_octets];
    zr::put_envelope_header(header, version);
    buffer.append(header, sizeof header);
    if (int status = object.asnwrite(buffer)) return status;
    buffer.detach(out.data, out.length);
    return 0;
}

int zr_asnbase::loadObject(zr_asn_object& object, int version, zr_asn_buffer_t& in) {
    const unsigned char* contents = nullptr;
    if (int status = zr::open_envelope(in, version, contents)) return status;
    const auto skipped = static_cast<unsigned int>(contents - in.data);
    zr_r_buffer_t cursor(in.data + skipped, in.length - skipped);
    return object.asnread(cursor);
}

int zr_asnbase::get_encoded_version(const zr_asn_buffer_t& in, unsigned int& flag) {
    flag = zr::has_envelope_header(in) && in.data[1] != 0 ? 0 : 1;
    return flag == 0 ? 0 : zr_err_bad_envelope;
}

zr_v37_asnbase::zr_v37_asnbase(security_t secure) : zr_asnbase(secure), version_(zr_normal) {
    register_child(&version_);
    version_.set_value(1);
}

zr_v37_asnbase::~zr_v37_asnbase() = default;

zrasn_integer::zrasn_integer(security_t secure) : zr_asn_integer(secure) {}
zrasn_integer::~zrasn_integer() = default;

int zrasn_integer::set_default_value(zr_asn_object* value) { return zr_asn_integer::set_default_value(value); }
int zrasn_integer::set_default_value() { return zr_asn_integer::set_default_value(0L); }

namespace {

template <class T>
int get_integer(zrasn_integer& object, T& value) {
    // By way of uint32_t, so that the unsigned types of every platform see the same 32 bits.
    const auto stored = static_cast<int32_t>(zr_intvalue(object));
    if constexpr (static_cast<T>(-1) < T{0}) {
        value = static_cast<T>(stored);
    } else {
        value = static_cast<T>(static_cast<uint32_t>(stored));
    }
    return 0;
}

}  // namespace

int zrasn_integer::get_value(unsigned long& value) { return get_integer(*this, value); }
int zrasn_integer::get_value(long& value) { return get_integer(*this, value); }
int zrasn_integer::get_value(unsigned int& value) { return get_integer(*this, value); }
int zrasn_integer::get_value(int& value) { return get_integer(*this, value); }
int zrasn_integer::get_value(unsigned short& value) { return get_integer(*this, value); }
int zrasn_integer::get_value(unsigned char& value) { return get_integer(*this, value); }

zrasn_octetstring::zrasn_octetstring(security_t secure) : zr_asn_octetstring(secure) {}
zrasn_octetstring::~zrasn_octetstring() = default;

int zrasn_octetstring::set_default_value(zr_asn_object* value) { return zr_asn_octetstring::set_default_value(value); }

int zrasn_octetstring::set_default_value() {
    const unsigned char empty_text = 0;
    return zr_asn_octetstring::set_default_value(&empty_text, 1);
}

int zrasn_octetstring::set_value(unsigned char* text) { return zr_set_strvalue(*this, text); }
int zrasn_octetstring::set_value(char* text) { return zr_set_strvalue(*this, text); }
int zrasn_octetstring::get_value(unsigned char*& text) { return zr_get_strvalue(*this, text); }
int zrasn_octetstring::get_value(char*& text) { return zr_get_strvalue(*this, text); }

int zrasn_octetstring::set_value(unsigned char c) {
    unsigned char text[] = {c, 0};
    return zr_set_strvalue(*this, text);
}

namespace {

// The stored octets; none when the value is absent.
void stored_octets(const zr_asn_octetstring& object, unsigned char*& octets, unsigned int& count) {
    octets = nullptr;
    count = 0;
    static_cast<void>(object.get_value(octets, count));
}

}  // namespace

int zrasn_octetstring::get_value(unsigned char*& data, unsigned long& length) const {
    unsigned char* octets = nullptr;
    unsigned int count = 0;
    stored_octets(*this, octets, count);
    length = 0;
    data = static_cast<unsigned char*>(std::malloc(count));
    if (data == nullptr && count != 0) return zr_err_out_of_memory;
    if (count != 0) std::memcpy(data, octets, count);
    length = count;
    return 0;
}

int zrasn_octetstring::get_value(unsigned long count, unsigned char* dest) const {
    unsigned char* octets = nullptr;
    unsigned int stored = 0;
    stored_octets(*this, octets, stored);
    const size_t copied = std::min<size_t>(count, stored);
    if (copied != 0) std::memcpy(dest, octets, copied);
    if (count > copied) std::memset(dest + copied, 0, count - copied);
    return 0;
}

int zrasn_octetstring::get_value(unsigned char& c) const {
    unsigned char* octets = nullptr;
    unsigned int count = 0;
    stored_octets(*this, octets, count);
    c = count != 0 && octets != nullptr ? octets[0] : static_cast<unsigned char>(0);
    return 0;
}

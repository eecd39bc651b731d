// What an operation throws, as text.
#pragma once

#include <string>

#include "asn1/asnbase/status.h"

namespace zr_test {

// thrown gives the exception's kind, code, message and file ("memory 275062885: Out of memory in src/asn1/asnbase"), or
// the text that was thrown instead of an exception; "nothing" when the operation returns.
template <class Operation>
std::string thrown(Operation&& operation) {
    const auto described = [](const char* kind, const zr_asn_exception& exception) {
        return kind + std::to_string(exception.code) + ": " + exception.message + " in " + exception.file;
    };
    try {
        operation();
    } catch (const char* text) {
        return text;
    } catch (const zr_asn_memexception& exception) {
        return described("memory ", exception);
    } catch (const zr_asn_unsupportederror& exception) {
        return described("unsupported ", exception);
    } catch (const zr_asn_exception& exception) {
        return described("", exception);
    }
    return "nothing";
}

}  // namespace zr_test

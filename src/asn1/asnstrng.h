// Character strings: code sets, the conversions between them, and the string objects.
#pragma once

#include "asn1/asnstrng/charstring.h"
#include "asn1/asnstrng/code_sets.h"
#include "asn1/asnstrng/converters.h"
#include "asn1/asnstrng/string_types.h"

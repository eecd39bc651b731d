// The core of the ASN.1 runtime: buffers, statuses and exceptions, the object root, primitive and constructed types.
#pragma once

#include "asn1/asnbase/any.h"
#include "asn1/asnbase/bitstring.h"
#include "asn1/asnbase/buffer.h"
#include "asn1/asnbase/choice.h"
#include "asn1/asnbase/collections.h"
#include "asn1/asnbase/composite.h"
#include "asn1/asnbase/object.h"
#include "asn1/asnbase/octetstring.h"
#include "asn1/asnbase/primitive.h"
#include "asn1/status.h"

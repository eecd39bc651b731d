// Status codes and exceptions are below the object tree now: asn1/status.h.
#pragma once

#include "asn1/status.h"

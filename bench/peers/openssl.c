/* The records of schema/records.asn1 as OpenSSL's ASN.1 templates. Nested records and integers are embedded where the
 * templates can do that. */
#include <openssl/asn1t.h>

typedef struct {
    int32_t timeLow, timeMid, timeHiAndVersion, clockSeqHiAndReserved, clockSeqLow;
    ASN1_OCTET_STRING* node;
} Uuid;
ASN1_SEQUENCE(Uuid) =
    {
        ASN1_EMBED(Uuid, timeLow, INT32),          ASN1_EMBED(Uuid, timeMid, INT32),
        ASN1_EMBED(Uuid, timeHiAndVersion, INT32), ASN1_EMBED(Uuid, clockSeqHiAndReserved, INT32),
        ASN1_EMBED(Uuid, clockSeqLow, INT32),      ASN1_SIMPLE(Uuid, node, ASN1_OCTET_STRING),
} ASN1_SEQUENCE_END(Uuid)

        typedef struct {
    int32_t valueType;
    ASN1_UTF8STRING* str;
    ASN1_OCTET_STRING* data;
} Value;
ASN1_SEQUENCE(Value) =
    {
        ASN1_EMBED(Value, valueType, INT32),
        ASN1_SIMPLE(Value, str, ASN1_UTF8STRING),
        ASN1_SIMPLE(Value, data, ASN1_OCTET_STRING),
} static_ASN1_SEQUENCE_END(Value)

        typedef struct {
    ASN1_UTF8STRING* name;
    STACK_OF(Value) * values;
} Attr;
ASN1_SEQUENCE(Attr) =
    {
        ASN1_SIMPLE(Attr, name, ASN1_UTF8STRING),
        ASN1_SEQUENCE_OF(Attr, values, Value),
} static_ASN1_SEQUENCE_END(Attr)

        typedef struct {
    STACK_OF(Attr) * attrs;
} AttrList;
ASN1_SEQUENCE(AttrList) =
    {
        ASN1_SEQUENCE_OF(AttrList, attrs, Attr),
} ASN1_SEQUENCE_END(AttrList)

        typedef struct {
    Uuid uuid;
    ASN1_UTF8STRING* name;
} SecId;
ASN1_SEQUENCE(SecId) =
    {
        ASN1_EMBED(SecId, uuid, Uuid),
        ASN1_SIMPLE(SecId, name, ASN1_UTF8STRING),
} static_ASN1_SEQUENCE_END(SecId)

        typedef struct {
    SecId id;
    STACK_OF(SecId) * ids;
} SecIdPa;
ASN1_SEQUENCE(SecIdPa) =
    {
        ASN1_EMBED(SecIdPa, id, SecId),
        ASN1_SEQUENCE_OF(SecIdPa, ids, SecId),
} static_ASN1_SEQUENCE_END(SecIdPa)

        typedef struct {
    int32_t intA;
    SecIdPa* pa;
    int32_t intB;
    AttrList* ext;
} Principal;
ASN1_SEQUENCE(Principal) =
    {
        ASN1_EMBED(Principal, intA, INT32),
        ASN1_OPT(Principal, pa, SecIdPa),
        ASN1_EMBED(Principal, intB, INT32),
        ASN1_OPT(Principal, ext, AttrList),
} static_ASN1_SEQUENCE_END(Principal)

        typedef struct {
    ASN1_UTF8STRING* name;
    STACK_OF(Principal) * principals;
} PrincipalChain;
ASN1_SEQUENCE(PrincipalChain) =
    {
        ASN1_SIMPLE(PrincipalChain, name, ASN1_UTF8STRING),
        ASN1_SEQUENCE_OF(PrincipalChain, principals, Principal),
} static_ASN1_SEQUENCE_END(PrincipalChain)

        typedef struct {
    PrincipalChain chain;
    ASN1_UTF8STRING *strA, *strB;
    AttrList ext, ext2;
} DecisionRequest;
ASN1_SEQUENCE(DecisionRequest) =
    {
        ASN1_EMBED(DecisionRequest, chain, PrincipalChain),  ASN1_SIMPLE(DecisionRequest, strA, ASN1_UTF8STRING),
        ASN1_SIMPLE(DecisionRequest, strB, ASN1_UTF8STRING), ASN1_EMBED(DecisionRequest, ext, AttrList),
        ASN1_EMBED(DecisionRequest, ext2, AttrList),
} ASN1_SEQUENCE_END(DecisionRequest)

        typedef struct {
    STACK_OF(ASN1_INTEGER) * perms;
} PermSet;
ASN1_SEQUENCE(PermSet) =
    {
        ASN1_SEQUENCE_OF(PermSet, perms, ASN1_INTEGER),
} static_ASN1_SEQUENCE_END(PermSet)

        typedef struct {
    PermSet permset;
    int32_t intA;
    SecId id;
} AclEntry;
ASN1_SEQUENCE(AclEntry) =
    {
        ASN1_EMBED(AclEntry, permset, PermSet),
        ASN1_EMBED(AclEntry, intA, INT32),
        ASN1_EMBED(AclEntry, id, SecId),
} static_ASN1_SEQUENCE_END(AclEntry)

        typedef struct {
    ASN1_UTF8STRING* name;
    STACK_OF(AclEntry) * entries;
    AttrList ext;
} Acl;
ASN1_SEQUENCE(Acl) =
    {
        ASN1_SIMPLE(Acl, name, ASN1_UTF8STRING),
        ASN1_SEQUENCE_OF(Acl, entries, AclEntry),
        ASN1_EMBED(Acl, ext, AttrList),
} ASN1_SEQUENCE_END(Acl)

        typedef struct {
    ASN1_UTF8STRING* name;
    ASN1_OCTET_STRING* data;
} AuditAttribute;
ASN1_SEQUENCE(AuditAttribute) =
    {
        ASN1_SIMPLE(AuditAttribute, name, ASN1_UTF8STRING),
        ASN1_SIMPLE(AuditAttribute, data, ASN1_OCTET_STRING),
} static_ASN1_SEQUENCE_END(AuditAttribute)

        typedef struct AuditElement_st {
    ASN1_UTF8STRING* name;
    ASN1_OCTET_STRING* data;
    STACK_OF(AuditAttribute) * attrs;
    STACK_OF(AuditElement) * elements;
} AuditElement;
static const ASN1_ITEM* AuditElement_it(void);
ASN1_SEQUENCE(AuditElement) =
    {
        ASN1_SIMPLE(AuditElement, name, ASN1_UTF8STRING),
        ASN1_SIMPLE(AuditElement, data, ASN1_OCTET_STRING),
        ASN1_SEQUENCE_OF(AuditElement, attrs, AuditAttribute),
        ASN1_SEQUENCE_OF(AuditElement, elements, AuditElement),
} static_ASN1_SEQUENCE_END(AuditElement)

        typedef struct {
    int32_t intA;
    ASN1_UTF8STRING* name;
    int32_t intB;
    STACK_OF(AuditElement) * elements;
} AuditEvent;
ASN1_SEQUENCE(AuditEvent) =
    {
        ASN1_EMBED(AuditEvent, intA, INT32),
        ASN1_SIMPLE(AuditEvent, name, ASN1_UTF8STRING),
        ASN1_EMBED(AuditEvent, intB, INT32),
        ASN1_SEQUENCE_OF(AuditEvent, elements, AuditElement),
} ASN1_SEQUENCE_END(AuditEvent)

        typedef struct {
    ASN1_UTF8STRING* name;
    int32_t intA, intB;
    ASN1_OCTET_STRING* body;
} Object;
ASN1_SEQUENCE(Object) =
    {
        ASN1_SIMPLE(Object, name, ASN1_UTF8STRING),
        ASN1_EMBED(Object, intA, INT32),
        ASN1_EMBED(Object, intB, INT32),
        ASN1_SIMPLE(Object, body, ASN1_OCTET_STRING),
} static_ASN1_SEQUENCE_END(Object)

        typedef struct {
    STACK_OF(Object) * objs;
    AttrList ext;
} ObjectList;
ASN1_SEQUENCE(ObjectList) = {
    ASN1_SEQUENCE_OF(ObjectList, objs, Object),
    ASN1_EMBED(ObjectList, ext, AttrList),
} ASN1_SEQUENCE_END(ObjectList)

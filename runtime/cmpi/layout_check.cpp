// Holds the CMPI headers to the layout that an object manager on 64-bit Linux expects. Only what
// every edition of the headers has is checked, so that a distribution's pass as well.
#include <cmpidt.h>
#include <cmpift.h>
#include <cmpimacs.h>

#include <cstddef>

static_assert(sizeof(CMPIBoolean) == 1 && sizeof(CMPIChar16) == 2 && sizeof(CMPICount) == 4);
static_assert(sizeof(CMPIUint64) == 8 && sizeof(CMPIReal64) == 8 && sizeof(CMPIrc) == 4);
static_assert(sizeof(CMPIType) == 2 && sizeof(CMPIValueState) == 2);
static_assert(sizeof(CMPIValue) == 16 && sizeof(CMPIStatus) == 16);
static_assert(offsetof(CMPIStatus, msg) == 8);
static_assert(sizeof(CMPIData) == 24 && offsetof(CMPIData, state) == 2);
static_assert(offsetof(CMPIData, value) == 8);
static_assert(sizeof(CMPIInstance) == 16 && offsetof(CMPIInstance, ft) == 8);
static_assert(sizeof(CMPIString) == 16 && sizeof(CMPIInstanceMI) == 16);

static_assert(CMPI_boolean == 2 && CMPI_char16 == 3 && CMPI_real32 == 8 && CMPI_real64 == 12);
static_assert(CMPI_uint8 == 0x80 && CMPI_uint64 == 0xB0 && CMPI_sint8 == 0xC0);
static_assert(CMPI_instance == 0x1000 && CMPI_ref == 0x1100 && CMPI_string == 0x1600);
static_assert(CMPI_dateTime == 0x1800 && CMPI_ARRAY == 0x2000 && CMPI_uint16A == 0x2090);
static_assert(CMPI_nullValue == 0x100 && CMPI_badValue == 0x8000);
static_assert(CMPI_RC_ERR_METHOD_NOT_FOUND == 17 && CMPI_RC_ERR_INVALID_DATA_TYPE == 61);

static_assert(offsetof(CMPIBroker, bft) == 8 && offsetof(CMPIBroker, eft) == 16);
static_assert(offsetof(CMPIBrokerFT, brokerName) == 8);
static_assert(offsetof(CMPIBrokerFT, prepareAttachThread) == 16);
static_assert(offsetof(CMPIBrokerFT, deliverIndication) == 40);
static_assert(offsetof(CMPIBrokerFT, getInstance) == 56);
static_assert(offsetof(CMPIBrokerFT, invokeMethod) == 136);
static_assert(offsetof(CMPIBrokerEncFT, newInstance) == 8);
static_assert(offsetof(CMPIBrokerEncFT, newDateTimeFromChars) == 64);
static_assert(offsetof(CMPIContextFT, getEntry) == 24);
static_assert(offsetof(CMPIResultFT, returnDone) == 48);
static_assert(offsetof(CMPIStringFT, getCharPtr) == 24);
static_assert(offsetof(CMPIArrayFT, setElementAt) == 48);
static_assert(offsetof(CMPIEnumerationFT, hasNext) == 32);
static_assert(offsetof(CMPIInstanceFT, setPropertyFilter) == 64);
static_assert(offsetof(CMPIObjectPathFT, getKeyCount) == 96);
static_assert(offsetof(CMPIArgsFT, getArgCount) == 48);
static_assert(offsetof(CMPIDateTimeFT, getStringFormat) == 32);
static_assert(offsetof(CMPIInstanceMIFT, execQuery) == 72);
static_assert(offsetof(CMPIAssociationMIFT, referenceNames) == 48);
static_assert(offsetof(CMPIMethodMIFT, invokeMethod) == 24);
static_assert(offsetof(CMPIIndicationMIFT, disableIndications) == 64);

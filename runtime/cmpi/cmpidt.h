/* Data types of the Common Manageability Programming Interface on 64-bit Linux: scalars, type
 * codes, value states, return codes, and the pair of handle and function table that every object
 * is. Layout and names are those of the published standard, version 1.0 with the additions of 2.0
 * and 2.1.
 *
 * The edition is chosen by CMPI_VERSION (100, 200 or 210; 210 if it is not set): a table of an
 * older edition ends before the members that a later one added. */
#ifndef _CMPIDT_H_
#define _CMPIDT_H_

#ifdef __cplusplus
extern "C" {
#endif

#ifndef CMPI_VERSION
#define CMPI_VERSION 210
#endif
#if CMPI_VERSION >= 210 && !defined(CMPI_VER_210)
#define CMPI_VER_210
#endif
#if CMPI_VERSION >= 200 && !defined(CMPI_VER_200)
#define CMPI_VER_200
#endif
#ifndef CMPI_VER_100
#define CMPI_VER_100
#endif

#define CMPIVersion100 100
#define CMPIVersion200 200
#define CMPIVersion210 210
#define CMPICurrentVersion CMPI_VERSION

typedef unsigned char CMPIBoolean;
typedef unsigned short CMPIChar16;
typedef unsigned char CMPIUint8;
typedef unsigned short CMPIUint16;
typedef unsigned int CMPIUint32;
typedef unsigned long long CMPIUint64;
typedef signed char CMPISint8;
typedef short CMPISint16;
typedef int CMPISint32;
typedef long long CMPISint64;
typedef float CMPIReal32;
typedef double CMPIReal64;

typedef unsigned int CMPICount;
typedef unsigned int CMPIFlags;
typedef int CMPIVersion;
typedef unsigned short CMPIType;
typedef unsigned short CMPIValueState;

/* Objects: a handle of the object manager's and the table of operations on it. */
typedef struct _CMPIInstance CMPIInstance;
typedef struct _CMPIInstanceFT CMPIInstanceFT;
typedef struct _CMPIObjectPath CMPIObjectPath;
typedef struct _CMPIObjectPathFT CMPIObjectPathFT;
typedef struct _CMPIArgs CMPIArgs;
typedef struct _CMPIArgsFT CMPIArgsFT;
typedef struct _CMPIString CMPIString;
typedef struct _CMPIStringFT CMPIStringFT;
typedef struct _CMPIArray CMPIArray;
typedef struct _CMPIArrayFT CMPIArrayFT;
typedef struct _CMPIDateTime CMPIDateTime;
typedef struct _CMPIDateTimeFT CMPIDateTimeFT;
typedef struct _CMPIEnumeration CMPIEnumeration;
typedef struct _CMPIEnumerationFT CMPIEnumerationFT;
typedef struct _CMPIContext CMPIContext;
typedef struct _CMPIContextFT CMPIContextFT;
typedef struct _CMPIResult CMPIResult;
typedef struct _CMPIResultFT CMPIResultFT;
typedef struct _CMPISelectExp CMPISelectExp;
typedef struct _CMPISelectExpFT CMPISelectExpFT;
typedef struct _CMPIInstanceMI CMPIInstanceMI;
typedef struct _CMPIInstanceMIFT CMPIInstanceMIFT;
typedef struct _CMPIAssociationMI CMPIAssociationMI;
typedef struct _CMPIAssociationMIFT CMPIAssociationMIFT;
typedef struct _CMPIMethodMI CMPIMethodMI;
typedef struct _CMPIMethodMIFT CMPIMethodMIFT;
typedef struct _CMPIIndicationMI CMPIIndicationMI;
typedef struct _CMPIIndicationMIFT CMPIIndicationMIFT;
typedef struct _CMPIBroker CMPIBroker;
typedef struct _CMPIBrokerFT CMPIBrokerFT;
typedef struct _CMPIBrokerEncFT CMPIBrokerEncFT;
typedef struct _CMPIBrokerExtFT CMPIBrokerExtFT;
typedef struct _CMPIBrokerMemFT CMPIBrokerMemFT;

/* Types of the later members, which stay opaque here. */
typedef struct _CMPIError CMPIError;
typedef struct _CMPIPropertyList CMPIPropertyList;
typedef struct _CMPIEnumerationFilter CMPIEnumerationFilter;
typedef struct _CMPISelectCond CMPISelectCond;
typedef struct _CMPIAccessor CMPIAccessor;
typedef void* CMPIMsgFileHandle;
typedef void* CMPICodepageID;
typedef int CMPIErrorSeverity;
typedef int CMPIErrorProbableCause;

struct _CMPIInstance {
    void* hdl;
    const CMPIInstanceFT* ft;
};
struct _CMPIObjectPath {
    void* hdl;
    const CMPIObjectPathFT* ft;
};
struct _CMPIArgs {
    void* hdl;
    const CMPIArgsFT* ft;
};
struct _CMPIString {
    void* hdl;
    const CMPIStringFT* ft;
};
struct _CMPIArray {
    void* hdl;
    const CMPIArrayFT* ft;
};
struct _CMPIDateTime {
    void* hdl;
    const CMPIDateTimeFT* ft;
};
struct _CMPIEnumeration {
    void* hdl;
    const CMPIEnumerationFT* ft;
};
struct _CMPIContext {
    void* hdl;
    const CMPIContextFT* ft;
};
struct _CMPIResult {
    void* hdl;
    const CMPIResultFT* ft;
};
struct _CMPISelectExp {
    void* hdl;
    const CMPISelectExpFT* ft;
};
struct _CMPIInstanceMI {
    void* hdl;
    const CMPIInstanceMIFT* ft;
};
struct _CMPIAssociationMI {
    void* hdl;
    const CMPIAssociationMIFT* ft;
};
struct _CMPIMethodMI {
    void* hdl;
    const CMPIMethodMIFT* ft;
};
struct _CMPIIndicationMI {
    void* hdl;
    const CMPIIndicationMIFT* ft;
};

typedef struct _CMPIValuePtr {
    void* ptr;
    CMPICount length;
} CMPIValuePtr;

typedef union _CMPIValue {
    CMPIBoolean boolean;
    CMPIChar16 char16;
    CMPIUint8 uint8;
    CMPIUint16 uint16;
    CMPIUint32 uint32;
    CMPIUint64 uint64;
    CMPISint8 sint8;
    CMPISint16 sint16;
    CMPISint32 sint32;
    CMPISint64 sint64;
    CMPIReal32 real32;
    CMPIReal64 real64;
    CMPIInstance* inst;
    CMPIObjectPath* ref;
    CMPIArgs* args;
    CMPISelectExp* filter;
    CMPIEnumeration* Enum;
    CMPIArray* array;
    CMPIString* string;
    char* chars;
    CMPIDateTime* dateTime;
    CMPIValuePtr dataPtr;
} CMPIValue;

/* Type codes; the code of an array is the scalar's with CMPI_ARRAY. */
#define CMPI_null (0)
#define CMPI_boolean (2)
#define CMPI_char16 (3)
#define CMPI_real32 (8)
#define CMPI_real64 (12)
#define CMPI_uint8 (0x80)
#define CMPI_uint16 (0x90)
#define CMPI_uint32 (0xA0)
#define CMPI_uint64 (0xB0)
#define CMPI_sint8 (0xC0)
#define CMPI_sint16 (0xD0)
#define CMPI_sint32 (0xE0)
#define CMPI_sint64 (0xF0)
#define CMPI_instance (0x1000)
#define CMPI_ref (0x1100)
#define CMPI_args (0x1200)
#define CMPI_class (0x1300)
#define CMPI_filter (0x1400)
#define CMPI_enumeration (0x1500)
#define CMPI_string (0x1600)
#define CMPI_chars (0x1700)
#define CMPI_dateTime (0x1800)
#define CMPI_ptr (0x1900)
#define CMPI_charsptr (0x1A00)
#define CMPI_ARRAY (0x2000)
#define CMPI_booleanA (CMPI_ARRAY | CMPI_boolean)
#define CMPI_char16A (CMPI_ARRAY | CMPI_char16)
#define CMPI_real32A (CMPI_ARRAY | CMPI_real32)
#define CMPI_real64A (CMPI_ARRAY | CMPI_real64)
#define CMPI_uint8A (CMPI_ARRAY | CMPI_uint8)
#define CMPI_uint16A (CMPI_ARRAY | CMPI_uint16)
#define CMPI_uint32A (CMPI_ARRAY | CMPI_uint32)
#define CMPI_uint64A (CMPI_ARRAY | CMPI_uint64)
#define CMPI_sint8A (CMPI_ARRAY | CMPI_sint8)
#define CMPI_sint16A (CMPI_ARRAY | CMPI_sint16)
#define CMPI_sint32A (CMPI_ARRAY | CMPI_sint32)
#define CMPI_sint64A (CMPI_ARRAY | CMPI_sint64)
#define CMPI_instanceA (CMPI_ARRAY | CMPI_instance)
#define CMPI_refA (CMPI_ARRAY | CMPI_ref)
#define CMPI_stringA (CMPI_ARRAY | CMPI_string)
#define CMPI_charsA (CMPI_ARRAY | CMPI_chars)
#define CMPI_dateTimeA (CMPI_ARRAY | CMPI_dateTime)
#define CMPI_ptrA (CMPI_ARRAY | CMPI_ptr)
#define CMPI_charsptrA (CMPI_ARRAY | CMPI_charsptr)

/* States of a value. */
#define CMPI_goodValue (0)
#define CMPI_nullValue (0x0100)
#define CMPI_keyValue (0x0200)
#define CMPI_notFound (0x0400)
#define CMPI_badValue (0x8000)

typedef struct _CMPIData {
    CMPIType type;
    CMPIValueState state;
    CMPIValue value;
} CMPIData;

typedef enum _CMPIrc {
    CMPI_RC_OK = 0,
    CMPI_RC_ERR_FAILED = 1,
    CMPI_RC_ERR_ACCESS_DENIED = 2,
    CMPI_RC_ERR_INVALID_NAMESPACE = 3,
    CMPI_RC_ERR_INVALID_PARAMETER = 4,
    CMPI_RC_ERR_INVALID_CLASS = 5,
    CMPI_RC_ERR_NOT_FOUND = 6,
    CMPI_RC_ERR_NOT_SUPPORTED = 7,
    CMPI_RC_ERR_CLASS_HAS_CHILDREN = 8,
    CMPI_RC_ERR_CLASS_HAS_INSTANCES = 9,
    CMPI_RC_ERR_INVALID_SUPERCLASS = 10,
    CMPI_RC_ERR_ALREADY_EXISTS = 11,
    CMPI_RC_ERR_NO_SUCH_PROPERTY = 12,
    CMPI_RC_ERR_TYPE_MISMATCH = 13,
    CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED = 14,
    CMPI_RC_ERR_INVALID_QUERY = 15,
    CMPI_RC_ERR_METHOD_NOT_AVAILABLE = 16,
    CMPI_RC_ERR_METHOD_NOT_FOUND = 17,
    CMPI_RC_DO_NOT_UNLOAD = 50,
    CMPI_RC_NEVER_UNLOAD = 51,
    CMPI_RC_ERR_INVALID_HANDLE = 60,
    CMPI_RC_ERR_INVALID_DATA_TYPE = 61,
    CMPI_RC_ERROR_SYSTEM = 100,
    CMPI_RC_ERROR = 200
} CMPIrc;

typedef struct _CMPIStatus {
    CMPIrc rc;
    CMPIString* msg;
} CMPIStatus;

typedef enum _CMPISeverity {
    CMPI_SEV_ERROR = 1,
    CMPI_SEV_INFO = 2,
    CMPI_SEV_WARNING = 3,
    CMPI_DEV_DEBUG = 4
} CMPISeverity;

typedef enum _CMPILevel { CMPI_LEV_INFO = 1, CMPI_LEV_WARNING = 2, CMPI_LEV_VERBOSE = 3 } CMPILevel;

/* Names of context entries. */
#define CMPIPrincipal "CMPIPrincipal"
#define CMPIInvocationFlags "CMPIInvocationFlags"
#define CMPIInitNameSpace "CMPIInitNameSpace"

#ifdef __cplusplus
}
#endif

#endif

/* Function tables of the Common Manageability Programming Interface, members in the standard's
 * order. A table's version (`ftVersion`, `brokerVersion`) tells how far it goes: check it before a
 * member that a later edition added is called. */
#ifndef _CMPIFT_H_
#define _CMPIFT_H_

#include "cmpidt.h"

#ifdef __cplusplus
extern "C" {
#endif

struct _CMPIBrokerFT {
    unsigned int brokerCapabilities;
    CMPIVersion brokerVersion;
    const char* brokerName;
    CMPIContext* (*prepareAttachThread)(const CMPIBroker* mb, const CMPIContext* ctx);
    CMPIStatus (*attachThread)(const CMPIBroker* mb, const CMPIContext* ctx);
    CMPIStatus (*detachThread)(const CMPIBroker* mb, const CMPIContext* ctx);
    CMPIStatus (*deliverIndication)(const CMPIBroker* mb, const CMPIContext* ctx, const char* ns,
                                    const CMPIInstance* ind);
    CMPIEnumeration* (*enumerateInstanceNames)(const CMPIBroker* mb, const CMPIContext* ctx,
                                               const CMPIObjectPath* classPath, CMPIStatus* rc);
    CMPIInstance* (*getInstance)(const CMPIBroker* mb, const CMPIContext* ctx,
                                 const CMPIObjectPath* instPath, const char** properties,
                                 CMPIStatus* rc);
    CMPIObjectPath* (*createInstance)(const CMPIBroker* mb, const CMPIContext* ctx,
                                      const CMPIObjectPath* classPath, const CMPIInstance* newInst,
                                      CMPIStatus* rc);
    CMPIStatus (*modifyInstance)(const CMPIBroker* mb, const CMPIContext* ctx,
                                 const CMPIObjectPath* instPath, const CMPIInstance* modInst,
                                 const char** properties);
    CMPIStatus (*deleteInstance)(const CMPIBroker* mb, const CMPIContext* ctx,
                                 const CMPIObjectPath* instPath);
    CMPIEnumeration* (*execQuery)(const CMPIBroker* mb, const CMPIContext* ctx,
                                  const CMPIObjectPath* classPath, const char* query,
                                  const char* lang, CMPIStatus* rc);
    CMPIEnumeration* (*enumerateInstances)(const CMPIBroker* mb, const CMPIContext* ctx,
                                           const CMPIObjectPath* classPath, const char** properties,
                                           CMPIStatus* rc);
    CMPIEnumeration* (*associators)(const CMPIBroker* mb, const CMPIContext* ctx,
                                    const CMPIObjectPath* instPath, const char* assocClass,
                                    const char* resultClass, const char* role,
                                    const char* resultRole, const char** properties,
                                    CMPIStatus* rc);
    CMPIEnumeration* (*associatorNames)(const CMPIBroker* mb, const CMPIContext* ctx,
                                        const CMPIObjectPath* instPath, const char* assocClass,
                                        const char* resultClass, const char* role,
                                        const char* resultRole, CMPIStatus* rc);
    CMPIEnumeration* (*references)(const CMPIBroker* mb, const CMPIContext* ctx,
                                   const CMPIObjectPath* instPath, const char* resultClass,
                                   const char* role, const char** properties, CMPIStatus* rc);
    CMPIEnumeration* (*referenceNames)(const CMPIBroker* mb, const CMPIContext* ctx,
                                       const CMPIObjectPath* instPath, const char* resultClass,
                                       const char* role, CMPIStatus* rc);
    CMPIData (*invokeMethod)(const CMPIBroker* mb, const CMPIContext* ctx,
                             const CMPIObjectPath* objPath, const char* method, const CMPIArgs* in,
                             CMPIArgs* out, CMPIStatus* rc);
    CMPIStatus (*setProperty)(const CMPIBroker* mb, const CMPIContext* ctx,
                              const CMPIObjectPath* instPath, const char* name,
                              const CMPIValue* value, CMPIType type);
    CMPIData (*getProperty)(const CMPIBroker* mb, const CMPIContext* ctx,
                            const CMPIObjectPath* instPath, const char* name, CMPIStatus* rc);
#ifdef CMPI_VER_210
    CMPIEnumeration* (*enumerateInstancesFiltered)(const CMPIBroker* mb, const CMPIContext* ctx,
                                                   const CMPIObjectPath* classPath,
                                                   const char** properties,
                                                   const char* filterQueryLanguage,
                                                   const char* filterQuery, CMPIStatus* rc);
    CMPIEnumeration* (*associatorsFiltered)(const CMPIBroker* mb, const CMPIContext* ctx,
                                            const CMPIObjectPath* instPath, const char* assocClass,
                                            const char* resultClass, const char* role,
                                            const char* resultRole, const char** properties,
                                            const char* filterQueryLanguage,
                                            const char* filterQuery, CMPIStatus* rc);
    CMPIEnumeration* (*referencesFiltered)(const CMPIBroker* mb, const CMPIContext* ctx,
                                           const CMPIObjectPath* instPath, const char* resultClass,
                                           const char* role, const char** properties,
                                           const char* filterQueryLanguage, const char* filterQuery,
                                           CMPIStatus* rc);
#endif
};

struct _CMPIBrokerEncFT {
    CMPIVersion ftVersion;
    CMPIInstance* (*newInstance)(const CMPIBroker* mb, const CMPIObjectPath* instPath,
                                 CMPIStatus* rc);
    CMPIObjectPath* (*newObjectPath)(const CMPIBroker* mb, const char* ns, const char* cn,
                                     CMPIStatus* rc);
    CMPIArgs* (*newArgs)(const CMPIBroker* mb, CMPIStatus* rc);
    CMPIString* (*newString)(const CMPIBroker* mb, const char* data, CMPIStatus* rc);
    CMPIArray* (*newArray)(const CMPIBroker* mb, CMPICount size, CMPIType type, CMPIStatus* rc);
    CMPIDateTime* (*newDateTime)(const CMPIBroker* mb, CMPIStatus* rc);
    CMPIDateTime* (*newDateTimeFromBinary)(const CMPIBroker* mb, CMPIUint64 binTime,
                                           CMPIBoolean interval, CMPIStatus* rc);
    CMPIDateTime* (*newDateTimeFromChars)(const CMPIBroker* mb, const char* datetime,
                                          CMPIStatus* rc);
    CMPISelectExp* (*newSelectExp)(const CMPIBroker* mb, const char* query, const char* lang,
                                   CMPIArray** projection, CMPIStatus* rc);
    CMPIBoolean (*classPathIsA)(const CMPIBroker* mb, const CMPIObjectPath* classPath,
                                const char* className, CMPIStatus* rc);
    CMPIString* (*toString)(const CMPIBroker* mb, const void* object, CMPIStatus* rc);
    CMPIBoolean (*isOfType)(const CMPIBroker* mb, const void* object, const char* type,
                            CMPIStatus* rc);
    CMPIString* (*getType)(const CMPIBroker* mb, const void* object, CMPIStatus* rc);
    CMPIString* (*getMessage)(const CMPIBroker* mb, const char* msgId, const char* defMsg,
                              CMPIStatus* rc, CMPICount count, ...);
    CMPIStatus (*logMessage)(const CMPIBroker* mb, CMPISeverity severity, const char* id,
                             const char* text, const CMPIString* string);
    CMPIStatus (*trace)(const CMPIBroker* mb, CMPILevel level, const char* component,
                        const char* text, const CMPIString* string);
#ifdef CMPI_VER_200
    CMPIError* (*newCMPIError)(const CMPIBroker* mb, const char* owner, const char* msgID,
                               const char* msg, const CMPIErrorSeverity sev,
                               const CMPIErrorProbableCause pc, const CMPIrc cimStatusCode,
                               CMPIStatus* rc);
    CMPIStatus (*openMessageFile)(const CMPIBroker* mb, const char* msgFile,
                                  CMPIMsgFileHandle* msgFileHandle);
    CMPIStatus (*closeMessageFile)(const CMPIBroker* mb, const CMPIMsgFileHandle msgFileHandle);
    CMPIString* (*getMessage2)(const CMPIBroker* mb, const char* msgId,
                               const CMPIMsgFileHandle msgFileHandle, const char* defMsg,
                               CMPIStatus* rc, CMPICount count, ...);
#endif
#ifdef CMPI_VER_210
    CMPIPropertyList* (*newPropertyList)(const CMPIBroker* mb, const char** properties,
                                         CMPIStatus* rc);
    CMPIString* (*newStringCP)(const CMPIBroker* mb, const char* data, const CMPICodepageID cpid,
                               CMPIStatus* rc);
    CMPIEnumerationFilter* (*newEnumerationFilter)(const CMPIBroker* mb,
                                                   const char* filterQueryLanguage,
                                                   const char* filterQuery, CMPIStatus* rc);
#endif
};

struct _CMPIBroker {
    const void* hdl;
    const CMPIBrokerFT* bft;
    const CMPIBrokerEncFT* eft;
    const CMPIBrokerExtFT* xft;
#ifdef CMPI_VER_200
    const CMPIBrokerMemFT* mft;
#endif
};

struct _CMPIContextFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIContext* ctx);
    CMPIContext* (*clone)(const CMPIContext* ctx, CMPIStatus* rc);
    CMPIData (*getEntry)(const CMPIContext* ctx, const char* name, CMPIStatus* rc);
    CMPIData (*getEntryAt)(const CMPIContext* ctx, CMPICount index, CMPIString** name,
                           CMPIStatus* rc);
    CMPICount (*getEntryCount)(const CMPIContext* ctx, CMPIStatus* rc);
    CMPIStatus (*addEntry)(const CMPIContext* ctx, const char* name, const CMPIValue* value,
                           const CMPIType type);
};

struct _CMPIResultFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIResult* rslt);
    CMPIResult* (*clone)(const CMPIResult* rslt, CMPIStatus* rc);
    CMPIStatus (*returnData)(const CMPIResult* rslt, const CMPIValue* value, const CMPIType type);
    CMPIStatus (*returnInstance)(const CMPIResult* rslt, const CMPIInstance* inst);
    CMPIStatus (*returnObjectPath)(const CMPIResult* rslt, const CMPIObjectPath* op);
    CMPIStatus (*returnDone)(const CMPIResult* rslt);
#ifdef CMPI_VER_200
    CMPIStatus (*returnError)(const CMPIResult* rslt, const CMPIError* er);
#endif
};

struct _CMPIStringFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIString* str);
    CMPIString* (*clone)(const CMPIString* str, CMPIStatus* rc);
    const char* (*getCharPtr)(const CMPIString* str, CMPIStatus* rc);
#ifdef CMPI_VER_210
    char* (*newCharsCP)(const CMPIString* str, const CMPICodepageID cpid, CMPIStatus* rc);
#endif
};

struct _CMPIArrayFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIArray* ar);
    CMPIArray* (*clone)(const CMPIArray* ar, CMPIStatus* rc);
    CMPICount (*getSize)(const CMPIArray* ar, CMPIStatus* rc);
    CMPIType (*getSimpleType)(const CMPIArray* ar, CMPIStatus* rc);
    CMPIData (*getElementAt)(const CMPIArray* ar, CMPICount index, CMPIStatus* rc);
    CMPIStatus (*setElementAt)(const CMPIArray* ar, CMPICount index, const CMPIValue* value,
                               CMPIType type);
};

struct _CMPIEnumerationFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIEnumeration* en);
    CMPIEnumeration* (*clone)(const CMPIEnumeration* en, CMPIStatus* rc);
    CMPIData (*getNext)(const CMPIEnumeration* en, CMPIStatus* rc);
    CMPIBoolean (*hasNext)(const CMPIEnumeration* en, CMPIStatus* rc);
    CMPIArray* (*toArray)(const CMPIEnumeration* en, CMPIStatus* rc);
};

struct _CMPIInstanceFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIInstance* inst);
    CMPIInstance* (*clone)(const CMPIInstance* inst, CMPIStatus* rc);
    CMPIData (*getProperty)(const CMPIInstance* inst, const char* name, CMPIStatus* rc);
    CMPIData (*getPropertyAt)(const CMPIInstance* inst, CMPICount index, CMPIString** name,
                              CMPIStatus* rc);
    CMPICount (*getPropertyCount)(const CMPIInstance* inst, CMPIStatus* rc);
    CMPIStatus (*setProperty)(const CMPIInstance* inst, const char* name, const CMPIValue* value,
                              CMPIType type);
    CMPIObjectPath* (*getObjectPath)(const CMPIInstance* inst, CMPIStatus* rc);
    CMPIStatus (*setPropertyFilter)(const CMPIInstance* inst, const char** properties,
                                    const char** keyList);
#ifdef CMPI_VER_200
    CMPIStatus (*setObjectPath)(const CMPIInstance* inst, const CMPIObjectPath* op);
    CMPIStatus (*setPropertyWithOrigin)(const CMPIInstance* inst, const char* name,
                                        const CMPIValue* value, const CMPIType type,
                                        const char* origin);
#endif
};

struct _CMPIObjectPathFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIObjectPath* op);
    CMPIObjectPath* (*clone)(const CMPIObjectPath* op, CMPIStatus* rc);
    CMPIStatus (*setNameSpace)(const CMPIObjectPath* op, const char* ns);
    CMPIString* (*getNameSpace)(const CMPIObjectPath* op, CMPIStatus* rc);
    CMPIStatus (*setHostname)(const CMPIObjectPath* op, const char* hn);
    CMPIString* (*getHostname)(const CMPIObjectPath* op, CMPIStatus* rc);
    CMPIStatus (*setClassName)(const CMPIObjectPath* op, const char* cn);
    CMPIString* (*getClassName)(const CMPIObjectPath* op, CMPIStatus* rc);
    CMPIStatus (*addKey)(const CMPIObjectPath* op, const char* key, const CMPIValue* value,
                         const CMPIType type);
    CMPIData (*getKey)(const CMPIObjectPath* op, const char* key, CMPIStatus* rc);
    CMPIData (*getKeyAt)(const CMPIObjectPath* op, CMPICount index, CMPIString** name,
                         CMPIStatus* rc);
    CMPICount (*getKeyCount)(const CMPIObjectPath* op, CMPIStatus* rc);
    CMPIStatus (*setNameSpaceFromObjectPath)(const CMPIObjectPath* op, const CMPIObjectPath* src);
    CMPIStatus (*setHostAndNameSpaceFromObjectPath)(const CMPIObjectPath* op,
                                                    const CMPIObjectPath* src);
    CMPIData (*getClassQualifier)(const CMPIObjectPath* op, const char* qName, CMPIStatus* rc);
    CMPIData (*getPropertyQualifier)(const CMPIObjectPath* op, const char* pName, const char* qName,
                                     CMPIStatus* rc);
    CMPIData (*getMethodQualifier)(const CMPIObjectPath* op, const char* methodName,
                                   const char* qName, CMPIStatus* rc);
    CMPIData (*getParameterQualifier)(const CMPIObjectPath* op, const char* mName,
                                      const char* pName, const char* qName, CMPIStatus* rc);
    CMPIString* (*toString)(const CMPIObjectPath* op, CMPIStatus* rc);
};

struct _CMPIArgsFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIArgs* args);
    CMPIArgs* (*clone)(const CMPIArgs* args, CMPIStatus* rc);
    CMPIStatus (*addArg)(const CMPIArgs* args, const char* name, const CMPIValue* value,
                         const CMPIType type);
    CMPIData (*getArg)(const CMPIArgs* args, const char* name, CMPIStatus* rc);
    CMPIData (*getArgAt)(const CMPIArgs* args, CMPICount index, CMPIString** name, CMPIStatus* rc);
    CMPICount (*getArgCount)(const CMPIArgs* args, CMPIStatus* rc);
};

struct _CMPIDateTimeFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIDateTime* dt);
    CMPIDateTime* (*clone)(const CMPIDateTime* dt, CMPIStatus* rc);
    CMPIUint64 (*getBinaryFormat)(const CMPIDateTime* dt, CMPIStatus* rc);
    CMPIString* (*getStringFormat)(const CMPIDateTime* dt, CMPIStatus* rc);
    CMPIBoolean (*isInterval)(const CMPIDateTime* dt, CMPIStatus* rc);
};

struct _CMPISelectExpFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPISelectExp* se);
    CMPISelectExp* (*clone)(const CMPISelectExp* se, CMPIStatus* rc);
    CMPIBoolean (*evaluate)(const CMPISelectExp* se, const CMPIInstance* inst, CMPIStatus* rc);
    CMPIString* (*getString)(const CMPISelectExp* se, CMPIStatus* rc);
    CMPISelectCond* (*getDOC)(const CMPISelectExp* se, CMPIStatus* rc);
    CMPISelectCond* (*getCOD)(const CMPISelectExp* se, CMPIStatus* rc);
    CMPIBoolean (*evaluateUsingAccessor)(const CMPISelectExp* se, CMPIAccessor* accessor,
                                         void* parm, CMPIStatus* rc);
};

struct _CMPIInstanceMIFT {
    CMPIVersion ftVersion;
    int miVersion;
    const char* miName;
    CMPIStatus (*cleanup)(CMPIInstanceMI* mi, const CMPIContext* ctx, CMPIBoolean terminating);
    CMPIStatus (*enumerateInstanceNames)(CMPIInstanceMI* mi, const CMPIContext* ctx,
                                         const CMPIResult* rslt, const CMPIObjectPath* classPath);
    CMPIStatus (*enumerateInstances)(CMPIInstanceMI* mi, const CMPIContext* ctx,
                                     const CMPIResult* rslt, const CMPIObjectPath* classPath,
                                     const char** properties);
    CMPIStatus (*getInstance)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                              const CMPIObjectPath* instPath, const char** properties);
    CMPIStatus (*createInstance)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                                 const CMPIObjectPath* classPath, const CMPIInstance* inst);
    CMPIStatus (*modifyInstance)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                                 const CMPIObjectPath* instPath, const CMPIInstance* modInst,
                                 const char** properties);
    CMPIStatus (*deleteInstance)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                                 const CMPIObjectPath* op);
    CMPIStatus (*execQuery)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                            const CMPIObjectPath* classPath, const char* query, const char* lang);
#ifdef CMPI_VER_210
    CMPIStatus (*enumerateInstancesFiltered)(CMPIInstanceMI* mi, const CMPIContext* ctx,
                                             const CMPIResult* rslt,
                                             const CMPIObjectPath* classPath,
                                             const char** properties,
                                             const char* filterQuerylanguage,
                                             const char* filterQuery, CMPIStatus* rc);
#endif
};

struct _CMPIAssociationMIFT {
    CMPIVersion ftVersion;
    int miVersion;
    const char* miName;
    CMPIStatus (*cleanup)(CMPIAssociationMI* mi, const CMPIContext* ctx, CMPIBoolean terminating);
    CMPIStatus (*associators)(CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                              const CMPIObjectPath* instPath, const char* assocClass,
                              const char* resultClass, const char* role, const char* resultRole,
                              const char** properties);
    CMPIStatus (*associatorNames)(CMPIAssociationMI* mi, const CMPIContext* ctx,
                                  const CMPIResult* rslt, const CMPIObjectPath* instPath,
                                  const char* assocClass, const char* resultClass, const char* role,
                                  const char* resultRole);
    CMPIStatus (*references)(CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                             const CMPIObjectPath* instPath, const char* resultClass,
                             const char* role, const char** properties);
    CMPIStatus (*referenceNames)(CMPIAssociationMI* mi, const CMPIContext* ctx,
                                 const CMPIResult* rslt, const CMPIObjectPath* instPath,
                                 const char* resultClass, const char* role);
#ifdef CMPI_VER_210
    CMPIStatus (*associatorsFiltered)(CMPIAssociationMI* mi, const CMPIContext* ctx,
                                      const CMPIResult* rslt, const CMPIObjectPath* instPath,
                                      const char* assocClass, const char* resultClass,
                                      const char* role, const char* resultRole,
                                      const char** properties, const char* filterQueryLanguage,
                                      const char* filterQuery, CMPIBoolean continueOnError);
    CMPIStatus (*referencesFiltered)(CMPIAssociationMI* mi, const CMPIContext* ctx,
                                     const CMPIResult* rslt, const CMPIObjectPath* instPath,
                                     const char* resultClass, const char* role,
                                     const char** properties, const char* filterQueryLanguage,
                                     const char* filterQuery, CMPIBoolean continueOnError);
#endif
};

struct _CMPIMethodMIFT {
    CMPIVersion ftVersion;
    int miVersion;
    const char* miName;
    CMPIStatus (*cleanup)(CMPIMethodMI* mi, const CMPIContext* ctx, CMPIBoolean terminating);
    CMPIStatus (*invokeMethod)(CMPIMethodMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                               const CMPIObjectPath* objPath, const char* method,
                               const CMPIArgs* in, CMPIArgs* out);
};

struct _CMPIIndicationMIFT {
    CMPIVersion ftVersion;
    int miVersion;
    const char* miName;
    CMPIStatus (*cleanup)(CMPIIndicationMI* mi, const CMPIContext* ctx, CMPIBoolean terminating);
    CMPIStatus (*authorizeFilter)(CMPIIndicationMI* mi, const CMPIContext* ctx,
                                  const CMPISelectExp* filter, const char* className,
                                  const CMPIObjectPath* classPath, const char* owner);
    CMPIStatus (*mustPoll)(CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                           const CMPISelectExp* filter, const char* className,
                           const CMPIObjectPath* classPath);
    CMPIStatus (*activateFilter)(CMPIIndicationMI* mi, const CMPIContext* ctx,
                                 const CMPISelectExp* filter, const char* className,
                                 const CMPIObjectPath* classPath, CMPIBoolean firstActivation);
    CMPIStatus (*deActivateFilter)(CMPIIndicationMI* mi, const CMPIContext* ctx,
                                   const CMPISelectExp* filter, const char* className,
                                   const CMPIObjectPath* classPath, CMPIBoolean lastDeActiviation);
    CMPIStatus (*enableIndications)(CMPIIndicationMI* mi, const CMPIContext* ctx);
    CMPIStatus (*disableIndications)(CMPIIndicationMI* mi, const CMPIContext* ctx);
#ifdef CMPI_VER_210
    CMPIStatus (*authorizeFilterCollection)(CMPIIndicationMI* mi, const CMPIContext* ctx,
                                            const CMPIInstance* collInst);
    CMPIStatus (*activateFilterCollection)(CMPIIndicationMI* mi, const CMPIContext* ctx,
                                           const CMPIInstance* collInst,
                                           CMPIBoolean firstActivation);
    CMPIStatus (*deActivateFilterCollection)(CMPIIndicationMI* mi, const CMPIContext* ctx,
                                             const CMPIInstance* collInst,
                                             CMPIBoolean lastDeActivation);
#endif
};

#ifdef __cplusplus
}
#endif

#endif

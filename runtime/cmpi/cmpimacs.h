/* The convenience macros of the Common Manageability Programming Interface: thin forms of calls
 * through an object's own table, or through the broker's. */
#ifndef _CMPIMACS_H_
#define _CMPIMACS_H_

#include "cmpidt.h"
#include "cmpift.h"

#define CMRelease(o) ((o)->ft->release((o)))
#define CMClone(o, rc) ((o)->ft->clone((o), (rc)))

#define CMGetClassName(o, rc) ((o)->ft->getClassName((o), (rc)))
#define CMGetNameSpace(o, rc) ((o)->ft->getNameSpace((o), (rc)))
#define CMSetNameSpace(o, ns) ((o)->ft->setNameSpace((o), (ns)))
#define CMGetKey(o, name, rc) ((o)->ft->getKey((o), (name), (rc)))
#define CMGetKeyAt(o, index, name, rc) ((o)->ft->getKeyAt((o), (index), (name), (rc)))
#define CMGetKeyCount(o, rc) ((o)->ft->getKeyCount((o), (rc)))
#define CMAddKey(o, name, value, type) ((o)->ft->addKey((o), (name), (CMPIValue*)(value), (type)))

#define CMGetProperty(o, name, rc) ((o)->ft->getProperty((o), (name), (rc)))
#define CMGetPropertyAt(o, index, name, rc) ((o)->ft->getPropertyAt((o), (index), (name), (rc)))
#define CMGetPropertyCount(o, rc) ((o)->ft->getPropertyCount((o), (rc)))
#define CMSetProperty(o, name, value, type)                                                        \
    ((o)->ft->setProperty((o), (name), (CMPIValue*)(value), (type)))
#define CMSetPropertyFilter(o, properties, keys)                                                   \
    ((o)->ft->setPropertyFilter((o), (properties), (keys)))
#define CMGetObjectPath(o, rc) ((o)->ft->getObjectPath((o), (rc)))

#define CMGetArg(o, name, rc) ((o)->ft->getArg((o), (name), (rc)))
#define CMGetArgAt(o, index, name, rc) ((o)->ft->getArgAt((o), (index), (name), (rc)))
#define CMGetArgCount(o, rc) ((o)->ft->getArgCount((o), (rc)))
#define CMAddArg(o, name, value, type) ((o)->ft->addArg((o), (name), (CMPIValue*)(value), (type)))

#define CMGetArrayCount(o, rc) ((o)->ft->getSize((o), (rc)))
#define CMGetArrayElementAt(o, index, rc) ((o)->ft->getElementAt((o), (index), (rc)))
#define CMSetArrayElementAt(o, index, value, type)                                                 \
    ((o)->ft->setElementAt((o), (index), (CMPIValue*)(value), (type)))

#define CMGetCharsPtr(o, rc) ((o)->ft->getCharPtr((o), (rc)))
#define CMGetCharPtr(o) ((o)->ft->getCharPtr((o), 0))

#define CMGetStringFormat(o, rc) ((o)->ft->getStringFormat((o), (rc)))
#define CMGetBinaryFormat(o, rc) ((o)->ft->getBinaryFormat((o), (rc)))
#define CMIsInterval(o, rc) ((o)->ft->isInterval((o), (rc)))

#define CMHasNext(o, rc) ((o)->ft->hasNext((o), (rc)))
#define CMGetNext(o, rc) ((o)->ft->getNext((o), (rc)))

#define CMGetContextEntry(o, name, rc) ((o)->ft->getEntry((o), (name), (rc)))

#define CMReturnData(r, value, type) ((r)->ft->returnData((r), (CMPIValue*)(value), (type)))
#define CMReturnInstance(r, instance) ((r)->ft->returnInstance((r), (instance)))
#define CMReturnObjectPath(r, path) ((r)->ft->returnObjectPath((r), (path)))
#define CMReturnDone(r) ((r)->ft->returnDone((r)))

#define CMNewInstance(b, path, rc) ((b)->eft->newInstance((b), (path), (rc)))
#define CMNewObjectPath(b, ns, cn, rc) ((b)->eft->newObjectPath((b), (ns), (cn), (rc)))
#define CMNewArgs(b, rc) ((b)->eft->newArgs((b), (rc)))
#define CMNewString(b, chars, rc) ((b)->eft->newString((b), (chars), (rc)))
#define CMNewArray(b, size, type, rc) ((b)->eft->newArray((b), (size), (type), (rc)))
#define CMNewDateTime(b, rc) ((b)->eft->newDateTime((b), (rc)))
#define CMNewDateTimeFromChars(b, chars, rc) ((b)->eft->newDateTimeFromChars((b), (chars), (rc)))

#define CBEnumInstances(b, ctx, path, properties, rc)                                              \
    ((b)->bft->enumerateInstances((b), (ctx), (path), (properties), (rc)))
#define CBEnumInstanceNames(b, ctx, path, rc)                                                      \
    ((b)->bft->enumerateInstanceNames((b), (ctx), (path), (rc)))
#define CBGetInstance(b, ctx, path, properties, rc)                                                \
    ((b)->bft->getInstance((b), (ctx), (path), (properties), (rc)))
#define CBCreateInstance(b, ctx, path, instance, rc)                                               \
    ((b)->bft->createInstance((b), (ctx), (path), (instance), (rc)))
#define CBModifyInstance(b, ctx, path, instance, properties)                                       \
    ((b)->bft->modifyInstance((b), (ctx), (path), (instance), (properties)))
#define CBDeleteInstance(b, ctx, path) ((b)->bft->deleteInstance((b), (ctx), (path)))
#define CBInvokeMethod(b, ctx, path, method, in, out, rc)                                          \
    ((b)->bft->invokeMethod((b), (ctx), (path), (method), (in), (out), (rc)))
#define CBDeliverIndication(b, ctx, ns, indication)                                                \
    ((b)->bft->deliverIndication((b), (ctx), (ns), (indication)))
#define CBPrepareAttachThread(b, ctx) ((b)->bft->prepareAttachThread((b), (ctx)))
#define CBAttachThread(b, ctx) ((b)->bft->attachThread((b), (ctx)))
#define CBDetachThread(b, ctx) ((b)->bft->detachThread((b), (ctx)))

#endif

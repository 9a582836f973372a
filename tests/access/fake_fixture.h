// Opens the fake libraries for a test case, by the names and on the way of the product.
#pragma once

#include "access/libraries.h"
#include "tests/access/fake_fc.h"
#include "tests/common/log_capture.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace cimple {

class WithFakeLibraries : public testing::Test {
protected:
    WithFakeLibraries() {
        loadManagementLibraries();
        void* address = dlsym(libraryHandles[LRMAPI_LIBRARY], fake::accessName);
        libraries = address == nullptr ? nullptr : reinterpret_cast<fake::Access>(address)();
    }
    void SetUp() override {
        ASSERT_NE(libraries, nullptr) << "the fake library is not in the path";
    }
    ~WithFakeLibraries() override { unloadManagementLibraries(); }

    fake::Libraries* libraries = nullptr;
    LogCapture log;
};

} // namespace cimple

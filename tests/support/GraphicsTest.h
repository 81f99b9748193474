#pragma once

#include "painting/WorkerPool.h"
#include "presentation/S52Render.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

namespace kelvox {

/// Pictures without a screen, drawn by the library as it is shipped.
class GraphicsTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        static int count = 1;
        static char name[] = "test";
        static char* arguments[] = {name, nullptr};
        if (!qApp)
            static const QGuiApplication application(count, arguments);
    }
    void SetUp() override { ASSERT_FALSE(library.symb().empty()); }

    WorkerPool pool{1};
    S52Model library{{KELVOX_RESOURCE_DIR, {}}};
    S52Render presentation{library};
};

} // namespace kelvox

#include "app/Application.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    kelvox::Application application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Kelvox"));
    return RUN_ALL_TESTS();
}

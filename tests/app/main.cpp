// The tests of the window's parts need an application; it shows nothing anywhere.

#include "app/Application.h"
#include "base/Folders.h"
#include "presentation/S52Model.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Nobody's bus: the tests that want one start their own.
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_RUNTIME_DIR", "/nonexistent");
    kelvox::Application application(argc, argv);
    // Without a library no buoy is drawn, and none can be clicked.
    kelvox::S52Model::setFolders({kelvox::folders::applicationResources(), {}});
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

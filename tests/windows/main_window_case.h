// tests/windows/main_window_case.h - what the tests of the main window start from: a window that is
// not loaded yet, with the calls to it filled in.
#pragma once

#include "core/settings.h"
#include "tests/windows/window_fixture.h"
#include "windows/mdiform1.h"
#include "windows/velnor1.h"

namespace velnor::testing {

class MainWindowCase {
protected:
    void setUp()
    {
        fixture_ = std::make_unique<WindowFixture>();
        window_ = std::make_unique<Velnor1>();
        upcalls().DisplayFile = [this](const QString& path) { window_->DisplayFile(path); };
        upcalls().OpenwithOLE = [this](const QString& path) { window_->OpenwithOLE(path); };
    }
    void tearDown()
    {
        window_.reset();
        fixture_.reset();
    }

    /// The options in force go to their file; then all is as after StartProgram.
    void restart()
    {
        SaveOptions({});
        SetDefaultOptions();
    }

    static constexpr const char* kOptions = "C:\\app\\Options.INI";
    static constexpr const char* kUnsupported =
        "File Type is not Supported by this Software. Do you want to Open the File with another "
        "Program?";
    std::unique_ptr<WindowFixture> fixture_;
    std::unique_ptr<Velnor1> window_;
};

}  // namespace velnor::testing

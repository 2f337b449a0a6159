// The widget and end-to-end tests are Qt Test classes gathered in one program, so that the
// program and the whole application it links are built once. Each test file registers its
// class with VELA_GUI_TEST(Class) in place of QTEST_MAIN; `gui_tests Class [Qt Test options]`
// runs one class, and CTest runs each class as a test of its own.
#pragma once

#include <QObject>
#include <functional>
#include <memory>

namespace vela::gui_test {

using Factory = std::function<std::unique_ptr<QObject>()>;

// Adds a test class under its name; returns true so that it can initialise a static.
bool Register(const char* name, Factory factory);

}  // namespace vela::gui_test

#define VELA_GUI_TEST(Class)                                                       \
  static const bool vela_gui_test_registered_##Class = ::vela::gui_test::Register( \
      #Class, [] { return std::unique_ptr<QObject>(std::make_unique<Class>()); });

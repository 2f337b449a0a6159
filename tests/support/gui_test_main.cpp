#include "support/gui_test_main.h"

#include <QApplication>
#include <QtTest>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace vela::gui_test {
namespace {

std::map<std::string, Factory>& Registry() {
  static std::map<std::string, Factory> registry;
  return registry;
}

}  // namespace

bool Register(const char* name, Factory factory) {
  Registry().emplace(name, std::move(factory));
  return true;
}

}  // namespace vela::gui_test

// What QTEST_MAIN does for a widget test, for the class named by the first argument;
// `--classes` lists the classes (the build lists each one's functions for CTest).
int main(int argc, char* argv[]) {
  if (argc == 2 && std::string(argv[1]) == "--classes") {
    for (const auto& [name, factory] : vela::gui_test::Registry())
      std::printf("%s\n", name.c_str());
    return 0;
  }
  QApplication app(argc, argv);
  app.setAttribute(Qt::AA_Use96Dpi, true);
  const auto& registry = vela::gui_test::Registry();
  const auto test = argc > 1 ? registry.find(argv[1]) : registry.end();
  if (test == registry.end()) {
    std::fprintf(stderr, "usage: %s CLASS [Qt Test options]\nclasses:\n", argv[0]);
    for (const auto& [name, factory] : registry) std::fprintf(stderr, "  %s\n", name.c_str());
    return 2;
  }
  std::vector<char*> args{argv[0]};
  args.insert(args.end(), argv + 2, argv + argc);
  const std::unique_ptr<QObject> object = test->second();
  return QTest::qExec(object.get(), static_cast<int>(args.size()), args.data());
}

// Runs every registered test class. "prog ClassName [qtest options]" runs one class.
#include "TestRegistry.h"

#include <QCoreApplication>
#ifdef ORVANE_TEST_GUI
#include <QApplication>
#endif
#include <QTest>

#include <cstring>

std::vector<TestRegistry::Entry> &TestRegistry::entries()
{
    static std::vector<Entry> list;
    return list;
}

int main(int argc, char **argv)
{
#ifdef ORVANE_TEST_GUI
    QApplication app(argc, argv);
#else
    QCoreApplication app(argc, argv);
#endif
    const char *only = nullptr;
    std::vector<char *> args(argv, argv + argc);
    if (argc > 1 && argv[1][0] != '-') {
        only = argv[1];
        args.erase(args.begin() + 1);
    }
    int failures = 0;
    int ran = 0;
    for (const auto &entry : TestRegistry::entries()) {
        if (only && std::strcmp(only, entry.name) != 0)
            continue;
        auto test = entry.make();
        failures += QTest::qExec(test.get(), static_cast<int>(args.size()), args.data());
        ++ran;
    }
    if (ran == 0) {
        qWarning("no test class named %s", only ? only : "(any)");
        return 1;
    }
    return failures == 0 ? 0 : 1;
}

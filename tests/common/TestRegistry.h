#pragma once

#include <QObject>

#include <functional>
#include <memory>
#include <vector>

// Lets one test program per source folder hold several Qt Test classes: each
// test file registers its class with ORVANE_TEST, and the shared main runs them.
namespace TestRegistry {

struct Entry {
    const char *name;
    std::function<std::unique_ptr<QObject>()> make;
};

std::vector<Entry> &entries();

struct Registrar {
    Registrar(const char *name, std::function<std::unique_ptr<QObject>()> make)
    {
        entries().push_back({name, std::move(make)});
    }
};

} // namespace TestRegistry

#define ORVANE_TEST(Class)                                                                         \
    static const TestRegistry::Registrar orvaneTestRegistrar##Class(                              \
        #Class, [] { return std::unique_ptr<QObject>(new Class); });

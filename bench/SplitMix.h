#pragma once

#include <QtGlobal>

// splitmix64: the same sequence on every machine and library, so every run of
// a benchmark generates the same data.
class SplitMix {
public:
    explicit SplitMix(quint64 seed) : m_state(seed) {}

    quint64 next()
    {
        quint64 z = (m_state += 0x9e3779b97f4a7c15ULL);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
        return z ^ (z >> 31);
    }
    int below(int bound) { return static_cast<int>(next() % static_cast<quint64>(bound)); }
    bool perMille(int chance) { return below(1000) < chance; }

private:
    quint64 m_state;
};

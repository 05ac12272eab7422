#pragma once

#include "platform/PropertyListSerialization.h"

#include <cstdlib>

// Whatever a reader accepts must survive being written and read again: a value
// the writers cannot reproduce would be lost on the user's next save.
inline void checkRoundTrip(const PropertyList &value, PropertyListFormat format)
{
    const QByteArray bytes = PropertyListSerialization::write(value, format);
    const auto again = PropertyListSerialization::read(bytes);
    if (!again || !again.value.value.isIdenticalTo(value))
        std::abort();
}

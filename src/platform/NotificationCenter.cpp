#include "NotificationCenter.h"

#include <algorithm>

NotificationCenter &NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

void NotificationCenter::addObserver(QObject *observer, const QString &name, Handler handler, QObject *sender)
{
    forgetDestroyed();
    Registration registration;
    registration.id = ++m_lastId;
    registration.observer = observer;
    registration.ownerless = observer == nullptr;
    registration.name = name;
    registration.sender = sender;
    registration.anySender = sender == nullptr;
    registration.handler = std::move(handler);
    m_registrations.push_back(std::move(registration));
}

void NotificationCenter::removeObserver(QObject *observer, const QString &name)
{
    std::erase_if(m_registrations, [&](const Registration &r) {
        const bool same = r.ownerless ? observer == nullptr : r.observer == observer;
        return (same && (name.isEmpty() || r.name == name)) || (!r.ownerless && r.observer.isNull());
    });
}

void NotificationCenter::post(const QString &name, QObject *object)
{
    const Notification notification{name, object};
    // Handlers may add or remove observers, or destroy them, while this runs:
    // deliver from a copy and check each registration is still wanted first.
    const std::vector<Registration> snapshot = m_registrations;
    for (const Registration &r : snapshot) {
        if (!r.name.isEmpty() && r.name != name)
            continue;
        if (!r.anySender && (r.sender.isNull() || r.sender.data() != object))
            continue;
        if ((!r.ownerless && r.observer.isNull()) || !isRegistered(r.id))
            continue;
        r.handler(notification);
    }
}

bool NotificationCenter::isRegistered(quint64 id) const
{
    // Ids grow in vector order and removal keeps that order, so a binary search finds one.
    const auto it = std::lower_bound(m_registrations.begin(), m_registrations.end(), id,
                                     [](const Registration &r, quint64 wanted) { return r.id < wanted; });
    return it != m_registrations.end() && it->id == id;
}

void NotificationCenter::forgetDestroyed()
{
    std::erase_if(m_registrations, [](const Registration &r) { return !r.ownerless && r.observer.isNull(); });
}

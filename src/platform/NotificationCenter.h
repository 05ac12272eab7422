#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <vector>

// A posted notice: its name and the object that posted it (may be null).
struct Notification {
    QString name;
    QObject *object = nullptr;
};

// The application's notification centre. Observers are QObjects; they are
// forgotten automatically when they are destroyed, so nobody has to remember to
// unregister. Delivery is synchronous, in registration order, on the posting
// thread.
class NotificationCenter : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<void(const Notification &)>;

    static NotificationCenter &defaultCenter();

    // Calls handler for every notification named name (every name when empty)
    // posted by sender (any sender when null).
    void addObserver(QObject *observer, const QString &name, Handler handler, QObject *sender = nullptr);
    // Removes observer's registrations for name (all of them when empty).
    void removeObserver(QObject *observer, const QString &name = QString());
    void post(const QString &name, QObject *object = nullptr);

private:
    struct Registration {
        quint64 id = 0; // increasing in registration order
        QPointer<QObject> observer;
        bool ownerless = false; // added with a null observer: lives until removed by removeObserver(nullptr)
        QString name;
        QPointer<QObject> sender;
        bool anySender = true;
        Handler handler;
    };
    bool isRegistered(quint64 id) const;
    void forgetDestroyed();

    std::vector<Registration> m_registrations;
    quint64 m_lastId = 0;
};

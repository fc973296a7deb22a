#pragma once

// What the guides use of other libraries, as far as compiling their blocks needs it.

#include <functional>

class QObject {};
inline QObject* qApp = nullptr;

namespace Qt {
enum ConnectionType { QueuedConnection };
}

struct QMetaObject {
    template <typename Function>
    static bool invokeMethod(QObject* /*context*/, Function&& function, Qt::ConnectionType /*type*/) {
        const std::function<void()> check = std::forward<Function>(function);
        return check != nullptr;
    }
};

using gpointer = void*;
inline unsigned g_idle_add_once(void (*function)(gpointer data), gpointer data) {
    return function != nullptr && data != nullptr;
}

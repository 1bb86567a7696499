// One start of the program, as far as the single instance goes. Says "passed" and ends, or "held" and then
// what it is sent. The token "give-up" makes it release the instance and keep running.

#include "adapters/dbus/SingleInstance.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    std::unique_ptr<vellux::SingleInstance> instance = vellux::SingleInstance::claim();
    std::puts(instance != nullptr ? "held" : "passed");
    if (instance == nullptr)
        return 0;
    QObject context;
    instance->setActivated([&](const QString& strToken) {
        std::printf("activated %s\n", qPrintable(strToken));
        if (strToken == "give-up")
            QMetaObject::invokeMethod(
                &context, [&] { instance.reset(), std::puts("gave up"); }, Qt::QueuedConnection);
    });
    return QCoreApplication::exec();
}

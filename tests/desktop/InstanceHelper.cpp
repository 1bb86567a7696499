// One start of the program, as far as the single instance goes. Says "passed" and ends, or "held" and then
// what it is sent. The token "give-up" makes it release the instance and keep running; each other token is
// the presence from then on, "call" one of a call. With "--hidden" a start that shows nothing; with
// "--status" what the holder tells.

#include "adapters/dbus/SingleInstance.h"
#include "adapters/dbus/StatusQuestion.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    const QString strOption = application.arguments().value(1);
    if (strOption == "--status") {
        const vellux::StatusAnswer answer = vellux::askStatus();
        std::puts(qPrintable(answer.strLine.value_or(answer.bSilent ? "silent" : "none")));
        return 0;
    }
    using Second = vellux::SingleInstance::Second;
    std::unique_ptr<vellux::SingleInstance> instance =
        vellux::SingleInstance::claim(strOption == "--hidden" ? Second::JustEnds : Second::ShowsTheFirst);
    std::puts(instance != nullptr ? "held" : "passed");
    if (instance == nullptr)
        return 0;
    QObject context;
    instance->setActivated([&](const vellux::Activation& activation) {
        const std::string strToken = activation.strToken.toStdString();
        std::printf("activated %s%s\n", strToken.c_str(), qPrintable(activation.strAction));
        if (strToken == "give-up")
            QMetaObject::invokeMethod(
                &context, [&] { instance.reset(), std::puts("gave up"); }, Qt::QueuedConnection);
        else
            instance->setStatus({"following", strToken, strToken == "call", "Green", "usable"});
    });
    return QCoreApplication::exec();
}

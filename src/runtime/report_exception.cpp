#include "runtime/report_exception.h"

#include "runtime/live_objects.h"

#include <QDebug>

#include <exception>
#include <string>

namespace marlune {

namespace {

std::string current_message(const char* unknown)
{
    try {
        throw;
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return unknown;
    }
}

}  // namespace

void report_exception(QObject* receiver, const char* unknown)
{
    // The receiver may have been destroyed by the call.
    const bool named =
        LiveObjects::instance().contains(receiver) && !receiver->objectName().isEmpty();
    const QString name = named ? receiver->objectName() : QStringLiteral("marlune");
    qCritical("%s: %s (the call was aborted and returns its default)", qUtf8Printable(name),
              current_message(unknown).c_str());
}

}  // namespace marlune

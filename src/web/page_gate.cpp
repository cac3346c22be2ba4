#include "web/page_gate.h"

#include "binding/page_transport.h"

#include <QLoggingCategory>
#include <QWebChannel>
#include <QWebChannelAbstractTransport>

#include <cstring>

namespace marlune {

namespace {

QLoggingCategory::CategoryFilter filter_before = nullptr;

/**
 * Silences the engine's log of each message that is not a JSON object: pages can send any number of
 * them, of any length.
 */
void silence_transport(QLoggingCategory* category)
{
    if (filter_before)  // null during the installation; by then all categories have been filtered
        filter_before(category);
    if (std::strcmp(category->categoryName(), "qt.webengine.webchanneltransport") == 0)
        category->setEnabled(QtCriticalMsg, false);
}

void silence_transport_once()
{
    if (!filter_before)
        filter_before = QLoggingCategory::installFilter(silence_transport);
}

/** Returns the object whose signal another object is handling. */
class SenderOf : public QObject {
public:
    static QObject* of(const QObject* object) { return (object->*&SenderOf::sender)(); }
};

/**
 * Returns the transport whose message the channel is handling; null if it handles none. A part of
 * the channel receives all messages.
 */
QWebChannelAbstractTransport* served_by(const QWebChannel& channel)
{
    for (const QObject* const part : channel.children()) {
        if (auto* const page = qobject_cast<QWebChannelAbstractTransport*>(SenderOf::of(part)))
            return page;
    }
    return nullptr;
}

}  // namespace

PageGate::PageGate()
{
    silence_transport_once();
}

PageGate::~PageGate() = default;

void PageGate::lead(QWebChannel* from, QWebChannel* to, const QString& view)
{
    from_ = from;
    to_ = to;
    view_ = view;
    from->registerObject(QStringLiteral("___gate"), this);
}

void PageGate::expect_page()
{
    for (const QPointer<db::PageTransport>& transport : transports_) {
        if (transport)
            transport->expect_page();
    }
}

bool PageGate::let_in()
{
    auto* const page = from_ ? served_by(*from_) : nullptr;
    if (!page || !to_)
        return false;
    from_->disconnectFrom(page);
    std::erase(transports_, nullptr);
    transports_.emplace_back(new db::PageTransport(page, to_, view_));
    return true;
}

}  // namespace marlune

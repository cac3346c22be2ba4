#include "binding/page_warnings.h"

#include <QDebug>

#include <utility>

namespace marlune::db {

namespace {

constexpr qsizetype longest_text = 80;

WarningShare* present_share = nullptr;

/**
 * Includes characters that change the direction of the surrounding text, or stand for half a
 * character.
 */
bool is_shown_as_number(QChar c)
{
    switch (c.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

}  // namespace

QString shown(const QString& text)
{
    QString result;
    for (const QChar c : QStringView(text).left(longest_text)) {
        if (is_shown_as_number(c))
            result += QStringLiteral("\\u%1").arg(uint(c.unicode()), 4, 16, QLatin1Char('0'));
        else
            result += c;
    }
    return text.size() > longest_text ? result + QChar(0x2026) : result;
}

bool may_warn()
{
    return !present_share || present_share->take();
}

void warn(const QString& text)
{
    if (may_warn())
        qWarning().noquote() << text;
}

bool WarningShare::take()
{
    if (left_ == 0)
        return false;
    if (--left_ > 0)
        return true;
    qWarning("a page has caused %d warnings. Further warnings are not logged.", whole - 1);
    return false;
}

WarningScope::WarningScope(WarningShare& share) : outer_(std::exchange(present_share, &share)) {}

WarningScope::~WarningScope()
{
    present_share = outer_;
}

}  // namespace marlune::db

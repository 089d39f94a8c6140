#include "editor/ToolTip.h"

#include <QTextDocument>

namespace vornadel
{

QString plainToolTip(const QString& text)
{
    return Qt::mightBeRichText(text)
               ? "<p style=\"white-space:pre-wrap\">" + text.toHtmlEscaped() + "</p>"
               : text;
}

} // namespace vornadel

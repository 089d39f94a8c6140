#include "app/TypedField.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include <algorithm>

namespace vornadel
{

namespace
{

/// What assistive technology sees of a field, and how it edits it.
class TypedFieldAccess final : public QAccessibleWidget,
                               public QAccessibleTextInterface,
                               public QAccessibleEditableTextInterface
{
public:
    explicit TypedFieldAccess(TypedField* field)
        : QAccessibleWidget(field, QAccessible::EditableText), m_field(*field)
    {
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        switch (type) {
        case QAccessible::TextInterface:
            return static_cast<QAccessibleTextInterface*>(this);
        case QAccessible::EditableTextInterface:
            return static_cast<QAccessibleEditableTextInterface*>(this);
        default:
            return QAccessibleWidget::interface_cast(type);
        }
    }

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? m_field.text() : QAccessibleWidget::text(kind);
    }
    void setText(QAccessible::Text kind, const QString& text) override
    {
        if (kind == QAccessible::Value) {
            replaceText(0, characterCount(), text);
        } else {
            QAccessibleWidget::setText(kind, text);
        }
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.editable = !m_field.isReadOnly();
        state.readOnly = m_field.isReadOnly();
        state.selectableText = true;
        return state;
    }

    // QAccessibleTextInterface
    void selection(int index, int* start, int* end) const override
    {
        const bool selected = index == 0 && m_field.hasSelectedText();
        *start = selected ? m_field.selectionStart() : 0;
        *end = selected ? m_field.selectionEnd() : 0;
    }
    int selectionCount() const override { return m_field.hasSelectedText() ? 1 : 0; }
    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int /*index*/) override { m_field.deselect(); }
    void setSelection(int /*index*/, int start, int end) override
    {
        m_field.setSelection(start, end - start);
    }
    int cursorPosition() const override { return m_field.cursorPosition(); }
    void setCursorPosition(int position) override { m_field.setCursorPosition(position); }
    QString text(int start, int end) const override
    {
        return m_field.text().mid(start, end - start);
    }
    int characterCount() const override { return static_cast<int>(m_field.text().size()); }
    QRect characterRect(int offset) const override
    {
        const QFontMetrics metrics = m_field.fontMetrics();
        const QString text = m_field.text();
        const QRect field = rect();
        return {field.x() + metrics.horizontalAdvance(text.left(offset)), field.y(),
                metrics.horizontalAdvance(text.mid(offset, 1)), field.height()};
    }
    int offsetAtPoint(const QPoint& point) const override
    {
        return m_field.cursorPositionAt(m_field.mapFromGlobal(point));
    }
    void scrollToSubstring(int start, int /*end*/) override { setCursorPosition(start); }
    QString attributes(int offset, int* start, int* end) const override
    {
        *start = *end = offset;
        return {};
    }

    // QAccessibleEditableTextInterface
    void deleteText(int start, int end) override { replaceText(start, end, {}); }
    void insertText(int offset, const QString& text) override { replaceText(offset, offset, text); }
    void replaceText(int start, int end, const QString& text) override
    {
        if (m_field.isReadOnly() || !m_field.isEnabled()) {
            return;
        }
        m_field.setCursorPosition(start);
        m_field.setSelection(start, end - start);
        m_field.insert(text);
    }

private:
    TypedField& m_field;
};

QAccessibleInterface* accessOf(const QString& /*className*/, QObject* object)
{
    auto* const field = dynamic_cast<TypedField*>(object);
    return field == nullptr ? nullptr : new TypedFieldAccess(field);
}

} // namespace

TypedField::TypedField(QWidget* parent) : QLineEdit(parent)
{
    QAccessible::installFactory(accessOf); // a second time it does nothing
}

} // namespace vornadel

#pragma once

#include "editor/Tone.h"

#include <QComboBox>
#include <QFrame>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>

#include <optional>

namespace vornadel
{

/// A read-only text of several lines, in one colour at a time, which adapts to palette changes.
class TextView final : public QPlainTextEdit
{
public:
    explicit TextView(QWidget* parent);

    void setTone(Tone tone);                            ///< colours all present and future text
    std::optional<Tone> tone() const { return m_tone; } ///< none: the palette's own text colour

    /// Looks like a read-only field, and leaves the tab chain as those do.
    void showAsField();

    /// Appends the text literally, without scrolling the view.
    void append(const QString& text);

protected:
    void changeEvent(QEvent* event) override;

private:
    void applyColours();

    std::optional<Tone> m_tone;
    bool m_isField = false;
};

/// A field that shows a text. Its ground is not that of a field to type into, in any palette. The
/// Tab key passes it by; its text can be selected with the mouse.
class ReadOnlyField final : public QLineEdit
{
public:
    explicit ReadOnlyField(QWidget* parent);

protected:
    void initStyleOption(QStyleOptionFrame* option) const override;
};

/// A button that Return and Enter press, too. A key that is held down presses it once.
class ActionButton final : public QPushButton
{
public:
    using QPushButton::QPushButton;

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

/// A bar that looks like a slider. Only the program moves it: it takes no focus, and a value set
/// from outside, such as by a screen reader, does not stay. It stores a finer percentage than its
/// handle can show.
class ProgressSlider final : public QSlider
{
public:
    explicit ProgressSlider(QWidget* parent);

    void setDoubleValue(double percent);             ///< 0 to 100
    double doubleValue() const { return m_percent; } ///< as last set

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* /*event*/) override {}
    void mouseMoveEvent(QMouseEvent* /*event*/) override {}
    void mouseReleaseEvent(QMouseEvent* /*event*/) override {}
    void wheelEvent(QWheelEvent* event) override;

private:
    void showPercent();

    double m_percent = 0;
};

/// A list to pick from that shows ten entries when open. The chosen entry may be longer than the
/// box, which then leaves out its middle; the tool tip shows the whole. The mouse wheel does
/// nothing: it would change the choice by accident.
class PickList final : public QComboBox
{
public:
    explicit PickList(QWidget* parent);

protected:
    void initStyleOption(QStyleOptionComboBox* option) const override;
    void wheelEvent(QWheelEvent* event) override;
};

/// A box with a title at its upper edge. The content area is the whole box below the title.
/// Children are placed in points from the box's lower left corner. The border is drawn above them,
/// because some reach to the edge of the box.
class TitledBox final : public QFrame
{
public:
    /// Height of the title's band. The highest child of a box must end below it.
    static constexpr int kTitleHeight = 24;

    TitledBox(const QString& title, QWidget* parent);

    QString title() const { return m_title; }
    void setBorderTone(Tone tone);
    QColor borderColor() const;
    /// Shows by the title's colour that the box would take what is dragged over it.
    void setDropHint(bool shown);

protected:
    void childEvent(QChildEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QString m_title;
    std::optional<Tone> m_borderTone;
    QWidget* m_border = nullptr;
    bool m_dropHint = false;
};

} // namespace vornadel

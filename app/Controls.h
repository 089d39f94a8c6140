#pragma once

#include "editor/Tone.h"

#include <QComboBox>
#include <QFrame>
#include <QPlainTextEdit>
#include <QSlider>

#include <optional>

namespace vornadel
{

/// A read-only text of several lines that has one colour at a time and follows a change of palette.
class TextView final : public QPlainTextEdit
{
public:
    explicit TextView(QWidget* parent);

    void setTone(Tone tone); ///< colours the whole text, what is there and what comes
    std::optional<Tone> tone() const { return m_tone; } ///< none: the palette's own text colour

    /// Appends the text as it stands; where the view was scrolled to does not change.
    void append(const QString& text);

protected:
    void changeEvent(QEvent* event) override;

private:
    void applyTone();

    std::optional<Tone> m_tone;
};

/// A slider that keeps a percentage finer than its handle can show.
class ProgressSlider final : public QSlider
{
public:
    explicit ProgressSlider(QWidget* parent);

    void setDoubleValue(double percent); ///< 0 to 100
    /// The percentage last set, or where the user has moved the handle since.
    double doubleValue() const { return m_percent; }

private:
    double m_percent = 0;
};

/// A list to pick from, with ten entries in view when it is open. What is picked may be longer than
/// the box and is its tool tip too. The wheel passes over it: turning it on the way would pick
/// something unasked.
class PickList final : public QComboBox
{
public:
    explicit PickList(QWidget* parent);

protected:
    void wheelEvent(QWheelEvent* event) override;
};

/// A box with a title in its upper edge. The content area is the whole box below the title:
/// children are placed in points from the box's lower left corner.
class TitledBox final : public QFrame
{
public:
    /// Height of the title's band. What is highest in a box must end below it.
    static constexpr int kTitleHeight = 24;

    TitledBox(const QString& title, QWidget* parent);

    QString title() const { return m_title; }
    void setBorderTone(Tone tone);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_title;
    std::optional<Tone> m_borderTone;
};

} // namespace vornadel

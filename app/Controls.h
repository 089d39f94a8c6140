#pragma once

#include "editor/Tone.h"

#include <QComboBox>
#include <QFrame>
#include <QPlainTextEdit>
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

    /// Appends the text literally, without scrolling the view.
    void append(const QString& text);

protected:
    void changeEvent(QEvent* event) override;

private:
    void applyTone();

    std::optional<Tone> m_tone;
};

/// A slider that stores a finer percentage than its handle can show.
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

/// A list to pick from that shows ten entries when open. The chosen entry may be longer than the
/// box, so it is the tool tip too. The mouse wheel does nothing: it would change the choice by
/// accident.
class PickList final : public QComboBox
{
public:
    explicit PickList(QWidget* parent);

protected:
    void wheelEvent(QWheelEvent* event) override;
};

/// A box with a title at its upper edge. The content area is the whole box below the title.
/// Children are placed in points from the box's lower left corner.
class TitledBox final : public QFrame
{
public:
    /// Height of the title's band. The highest child of a box must end below it.
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

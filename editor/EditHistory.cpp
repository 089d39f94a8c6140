#include "editor/EditHistory.h"

#include <utility>

namespace vornadel
{

/// One step from a version of the image to the next.
class EditHistory::Step final : public QUndoCommand
{
public:
    Step(EditHistory& history, Version before, Version after)
        : m_history(history), m_before(std::move(before)), m_after(std::move(after))
    {
    }

    void setField(int field, bool mayMerge)
    {
        m_field = field;
        m_mayMerge = mayMerge;
    }
    void setItem(std::shared_ptr<PropItem> item, std::string before)
    {
        m_item = std::move(item);
        m_valueBefore = std::move(before);
        m_valueAfter = m_item->curValue;
    }

    void undo() override { take(m_after, m_before, m_valueBefore); }
    void redo() override
    {
        if (!std::exchange(m_isNew, false)) { // the change has been made before it was told
            take(m_before, m_after, m_valueAfter);
        }
    }

    int id() const override { return m_field; }
    bool mergeWith(const QUndoCommand* next) override
    {
        const auto& step = static_cast<const Step&>(*next); // there are no others
        // A step that has undone itself is off the stack, and this is an earlier one.
        if (!step.m_mayMerge || step.m_before.state != m_after.state) {
            return false;
        }
        m_after = step.m_after;
        setObsolete(*m_before.state == *m_after.state);
        return true;
    }

private:
    void take(const Version& from, const Version& to, const std::string& value)
    {
        if (m_item != nullptr) {
            m_item->curValue = value;
        }
        m_history.restore(to, {from.state, to.state, from.origin != to.origin, m_item});
    }

    EditHistory& m_history;
    Version m_before;
    Version m_after;
    int m_field = kNoField;
    bool m_mayMerge = false;
    bool m_isNew = true;
    std::shared_ptr<PropItem> m_item;
    std::string m_valueBefore;
    std::string m_valueAfter;
};

EditHistory::EditHistory(FwImage& image) : m_image(image)
{
    m_stack.setUndoLimit(kMostSteps);
    m_now = version(std::make_shared<Origin>());
    *m_now.origin = {m_now.state, m_now.state};
}

EditHistory::Version EditHistory::version(std::shared_ptr<Origin> origin) const
{
    return {m_image.size > kLargestImage
                ? nullptr
                : std::make_shared<const ImageState>(FwImage_State(m_image)),
            std::move(origin)};
}

void EditHistory::add(std::unique_ptr<Step> step)
{
    m_stack.push(step.release()); // it is the stack's from now on
    tellChange();
}

void EditHistory::edited(int field)
{
    Version after = version(m_now.origin);
    if (after.state == nullptr) {
        m_largeEdited = true;
        tellChange();
        return;
    }
    if (*after.state == *m_now.state) {
        return;
    }
    auto step = std::make_unique<Step>(*this, m_now, after);
    step->setField(field, m_mayMerge);
    m_now = std::move(after);
    m_mayMerge = true;
    add(std::move(step));
}

void EditHistory::edited(const std::shared_ptr<PropItem>& item, const std::string& before)
{
    Version after = version(m_now.origin);
    if (after.state == nullptr) {
        m_largeEdited = true;
        tellChange();
        return;
    }
    if (*after.state == *m_now.state && item->curValue == before) {
        return;
    }
    auto step = std::make_unique<Step>(*this, m_now, after);
    step->setItem(item, before);
    m_now = std::move(after);
    m_mayMerge = false;
    add(std::move(step));
}

void EditHistory::replaced()
{
    const Version before = m_now;
    m_now = version(std::make_shared<Origin>());
    *m_now.origin = {m_now.state, m_now.state};
    m_mayMerge = false;
    m_largeEdited = false;
    if (before.state == nullptr || m_now.state == nullptr) {
        m_stack.clear();
    } else if ((before.state->loaded || m_stack.count() > 0) && *before.state != *m_now.state) {
        add(std::make_unique<Step>(*this, before, m_now));
        return;
    }
    tellChange();
}

void EditHistory::saved()
{
    m_now.origin->saved = m_now.state;
    m_mayMerge = false;
    m_largeEdited = false;
    tellChange();
}

void EditHistory::undo()
{
    m_mayMerge = false;
    m_stack.undo();
}

void EditHistory::redo()
{
    m_mayMerge = false;
    m_stack.redo();
}

void EditHistory::restore(const Version& to, const Change& change)
{
    FwImage_Restore(m_image, *to.state);
    m_now = to;
    if (restored) {
        restored(change);
    }
    tellChange();
}

void EditHistory::tellChange() const
{
    if (changed) {
        changed();
    }
}

const ImageState* EditHistory::original() const
{
    const ImageState* const loaded = m_now.origin->loaded.get();
    return loaded != nullptr && loaded->loaded ? loaded : nullptr;
}

const ImageState* EditHistory::current() const
{
    return m_now.state != nullptr && m_now.state->loaded ? m_now.state.get() : nullptr;
}

const ImageState* EditHistory::lastSaved() const { return m_now.origin->saved.get(); }

bool EditHistory::hasUnsavedEdits() const
{
    return m_now.state == nullptr ? m_largeEdited
                                  : m_now.state->bytes != m_now.origin->saved->bytes;
}

} // namespace vornadel

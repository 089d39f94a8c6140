#pragma once

#include "firmware/FwImage.h"
#include "firmware/ImageState.h"
#include "props/PropItem.h"

#include <QUndoStack>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace vornadel
{

/// The edits of an image: what can be undone and redone, what was read or loaded, what is not
/// saved. It is told after each change, and keeps a copy of the whole image for each step, so an
/// undo brings every byte back. An image larger than kLargestImage has no history. Main thread.
class EditHistory
{
public:
    static constexpr int kMostSteps = 100;
    static constexpr std::int32_t kLargestImage = 256 * 1024; ///< bytes; a flash has 32 KiB

    /// Typing in the same field in a row is one step; an edit of kNoField always is a step.
    static constexpr int kNoField = -1;

    /// What an undo or a redo has done to the image.
    struct Change {
        std::shared_ptr<const ImageState> before;
        std::shared_ptr<const ImageState> after;
        bool otherImage = false;        ///< not an edit, but a read or a load
        std::shared_ptr<PropItem> item; ///< the edited property; null for another edit
    };

    /// `image` must outlive the history.
    explicit EditHistory(FwImage& image);

    /// The image has been edited. Does nothing if that has changed nothing.
    void edited(int field = kNoField);
    /// A property has been edited; its current value was `before`.
    void edited(const std::shared_ptr<PropItem>& item, const std::string& before);
    /// A read or a load has replaced the image.
    void replaced();
    /// The image has been saved.
    void saved();

    void undo();
    void redo();
    bool canUndo() const { return m_stack.canUndo(); }
    bool canRedo() const { return m_stack.canRedo(); }

    /// The image as it was read or loaded; null if there is none, or it is too large.
    const ImageState* original() const;
    /// The image as it is; null if it is too large or not loaded.
    const ImageState* current() const;
    /// The image as it was saved last, or else read or loaded; null if it is too large.
    const ImageState* lastSaved() const;
    /// Whether the image differs from what was saved last.
    bool hasUnsavedEdits() const;

    std::function<void(const Change&)> restored; ///< after an undo or a redo
    std::function<void()> changed;               ///< after every change, whatever caused it

private:
    /// An image since it was read or loaded.
    struct Origin {
        std::shared_ptr<const ImageState> loaded;
        std::shared_ptr<const ImageState> saved;
    };
    struct Version {
        std::shared_ptr<const ImageState> state; ///< null if the image is too large
        std::shared_ptr<Origin> origin;
    };
    class Step;

    Version version(std::shared_ptr<Origin> origin) const;
    void add(std::unique_ptr<Step> step);
    void restore(const Version& to, const Change& change);
    void tellChange() const;

    FwImage& m_image;
    QUndoStack m_stack;
    Version m_now;
    bool m_mayMerge = false;    ///< the next edit of the same field belongs to the last step
    bool m_largeEdited = false; ///< there is no history, but there was an edit
};

} // namespace vornadel

#pragma once

#include "flows/FlowTexts.h"

#include <string>
#include <utility>
#include <vector>

namespace vornadel::test
{

/// Records what a flow shows.
class RecordingReporter final : public FlowTextReporter
{
public:
    enum class Kind { Reset, Blue, Red, Progress };
    struct Entry {
        Kind kind;
        std::string text;
        double percent = 0;
        Wait wait = Wait::Yes;
    };

    std::vector<std::string> texts(Kind kind) const
    {
        std::vector<std::string> found;
        for (const Entry& entry : entries) {
            if (entry.kind == kind) {
                found.push_back(entry.text);
            }
        }
        return found;
    }

    std::vector<double> values(Wait wait) const
    {
        std::vector<double> found;
        for (const Entry& entry : entries) {
            if (entry.kind == Kind::Progress && entry.wait == wait) {
                found.push_back(entry.percent);
            }
        }
        return found;
    }

    std::vector<Entry> entries;

private:
    void resetProgressInfo() override { entries.push_back({Kind::Reset, {}}); }
    void appendProgressInfo_Blue(const std::string& text) override
    {
        entries.push_back({Kind::Blue, text});
    }
    void appendProgressInfo_Red(const std::string& text) override
    {
        entries.push_back({Kind::Red, text});
    }
    void updateProgressBar(double percent, Wait wait) override
    {
        entries.push_back({Kind::Progress, {}, percent, wait});
    }
};

} // namespace vornadel::test

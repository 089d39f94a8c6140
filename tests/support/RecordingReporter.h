#pragma once

#include "flows/FlowTexts.h"

#include <sstream>
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

    /// All entries, in order: "reset", "blue TEXT", "red TEXT", and "10%" for a value, or "10%
    /// posted" for one without waiting.
    std::vector<std::string> lines() const
    {
        std::vector<std::string> all;
        for (const Entry& entry : entries) {
            std::ostringstream line;
            switch (entry.kind) {
            case Kind::Reset:
                line << "reset";
                break;
            case Kind::Blue:
                line << "blue " << entry.text;
                break;
            case Kind::Red:
                line << "red " << entry.text;
                break;
            case Kind::Progress:
                line << entry.percent << '%' << (entry.wait == Wait::Yes ? "" : " posted");
                break;
            }
            all.push_back(line.str());
        }
        return all;
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

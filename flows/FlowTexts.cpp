#include "flows/FlowTexts.h"

#include <algorithm>
#include <iterator>
#include <span>

namespace vornadel
{

/// How the bar moves in a step.
enum class Bar {
    Still,
    AtTheEnd,       ///< at once, waiting for display
    AtTheEndPosted, ///< at once, without waiting
    WithThePieces,  ///< with each piece, without waiting
};

struct StepTexts {
    Step step;
    const char* begins; ///< blue; may be empty
    const char* fails;  ///< red
    Bar bar = Bar::Still;
    double percent{}; ///< of the bar
};

/// Everything shown for one kind of flow.
struct FlowTexts {
    FlowKind flow;
    std::span<const StepTexts> steps;
    const char* success; ///< blue
    const char* failure; ///< red, after the reason
    bool barBeforeReset;
    bool barBackTo0;
};

namespace
{

constexpr const char* kSaves = "Save Flash...\n";
constexpr const char* kFailsToSave = "Fail to Save Flash\n";

constexpr StepTexts kUpdateSteps[] = {
    {Step::Open, "",
     "Fail To Open Rom Device\nPlease Load Driver firstly\nThen replugin usb hub device\n"},
    {Step::Save, kSaves, kFailsToSave},
    {Step::Erase, "Erase Flash...\n", "Fail to Erase Flash\n", Bar::AtTheEnd, 10},
    {Step::Write, "Write Flash...\n", "Fail to Write Flash\n", Bar::WithThePieces, 40},
    {Step::Read, "Read Flash...\n", "Fail to Read Flash\n", Bar::WithThePieces, 40},
    {Step::Verify, "Verify Flash...\n", "Fail to verify flash\n", Bar::AtTheEnd, 10},
    {Step::Restart, "Reset to Flash Code...\n", "Fail to Reset to Flash Code\n"},
};

constexpr StepTexts kReadSteps[] = {
    {Step::Open, "Open Device...\n",
     "Fail to Open Rom Device\nPlease Load Driver firstly\nThen replugin usb hub device\n",
     Bar::AtTheEndPosted, 10},
    {Step::Read, "Reading Flash...\n", "Fail to Read Flash\n", Bar::WithThePieces, 80},
    {Step::Restart, "Reset to Flash Code...\n", "Fail to Reset to Flash Code\n",
     Bar::AtTheEndPosted, 10},
};

constexpr StepTexts kEraseSteps[] = {
    {Step::Open, "Open Rom Device...\n", "Fail to Open Rom Device"},
    {Step::Save, kSaves, kFailsToSave},
    {Step::Erase, "Erase Flash...\n", "Fail to Erase flash"},
    {Step::Restart, "Reseting...\n", "Fail to Reset Flash & Wait"},
};

constexpr StepTexts kVerifySteps[] = {
    {Step::Open, "Open Device...\n", "Fail to Open Rom Device\n", Bar::AtTheEndPosted, 10},
    {Step::Read, "Read Flash...\n", "Fail to Read Flash\n", Bar::WithThePieces, 70},
    {Step::Verify, "Verify Flash...\n", "Fail to verify flash\n", Bar::AtTheEnd, 10},
    {Step::Restart, "Reset to Flash Code...\n", "Fail to Reset to Flash Code\n",
     Bar::AtTheEndPosted, 10},
};

constexpr StepTexts kRestartSteps[] = {
    {Step::Open, "Open Device...\n", "Fail to Open Device\n"},
    {Step::Restart, "Restart Hub...\n", "Fail to Restart Hub\n"},
};

constexpr const char* kWrongImage = "Wrong firmware file\n";

std::string header(const FlowStart& start)
{
    return "FW:" + start.imageName + "(size=" + std::to_string(start.imageSize) + ")\n\n";
}

constexpr FlowTexts kFlowTexts[] = {
    {FlowKind::Update, kUpdateSteps, "Update FW Success\n", "Update FW Fail\n", false, false},
    {FlowKind::Read, kReadSteps, "Read Fw Success\n", "Read Fw Fail\n", true, true},
    {FlowKind::Erase, kEraseSteps, "Erase FW Success\n", "\nErase FW Fail\n", false, false},
    {FlowKind::Restore, kUpdateSteps, "Restore FW Success\n", "Restore FW Fail\n", false, false},
    {FlowKind::Verify, kVerifySteps, "Verify FW Success\n", "Verify FW Fail\n", false, false},
    {FlowKind::Restart, kRestartSteps, "Restart Hub Success\n", "Restart Hub Fail\n", false, false},
};

const FlowTexts& textsOf(FlowKind flow)
{
    return *std::find_if(std::begin(kFlowTexts), std::end(kFlowTexts),
                         [flow](const FlowTexts& each) { return each.flow == flow; });
}

const StepTexts& textsOf(const FlowTexts& flow, Step step)
{
    return *std::find_if(flow.steps.begin(), flow.steps.end(),
                         [step](const StepTexts& each) { return each.step == step; });
}

} // namespace

void FlowTextReporter::started(const FlowStart& start)
{
    m_flow = &textsOf(start.flow);
    if (m_flow->barBeforeReset) {
        updateProgressBar(0, Wait::Yes);
        resetProgressInfo();
    } else {
        resetProgressInfo();
        updateProgressBar(0, Wait::Yes);
    }
    if (start.imageSize > 0 || start.flow == FlowKind::Update) {
        appendProgressInfo_Blue(header(start));
    }
}

void FlowTextReporter::stepStarted(Step step)
{
    endStep();
    m_step = &textsOf(*m_flow, step);
    m_done = 0;
    if (const std::string text = m_step->begins; !text.empty()) {
        appendProgressInfo_Blue(text);
    }
}

void FlowTextReporter::progressed(std::int32_t done, std::int32_t total)
{
    m_percent += static_cast<double>(done - m_done) / total * m_step->percent;
    m_done = done;
    updateProgressBar(m_percent, Wait::No);
}

void FlowTextReporter::finished(const FlowResult& result)
{
    if (result.succeeded()) {
        endStep();
        appendProgressInfo_Blue(m_flow->success);
        return;
    }
    if (result.cause != Cause::Interrupted) { // then no step has failed
        appendProgressInfo_Red(
            result.cause == Cause::WrongImage ? kWrongImage : textsOf(*m_flow, result.step).fails);
    }
    appendProgressInfo_Red(m_flow->failure);
}

void FlowTextReporter::closed()
{
    if (m_flow->barBackTo0) {
        updateProgressBar(0, Wait::No);
    }
}

// A step has succeeded once the next one begins, or once the flow has succeeded.
void FlowTextReporter::endStep()
{
    if (m_step != nullptr && (m_step->bar == Bar::AtTheEnd || m_step->bar == Bar::AtTheEndPosted)) {
        m_percent += m_step->percent;
        updateProgressBar(m_percent, m_step->bar == Bar::AtTheEnd ? Wait::Yes : Wait::No);
    }
}

} // namespace vornadel

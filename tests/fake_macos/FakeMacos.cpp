#include "tests/fake_macos/FakeMacos.h"

#include "tests/fake_macos/MacState.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace vornadel::test
{

namespace
{

std::mutex currentMutex;
std::shared_ptr<MacState> current;

} // namespace

CurrentMac::CurrentMac()
{
    {
        const std::lock_guard lock(currentMutex);
        m_state = current;
    }
    if (!m_state) {
        std::fputs("a function of macOS was called, and there is no machine\n", stderr);
        std::abort();
    }
    m_lock = std::unique_lock(m_state->mutex);
}

std::string statusText(std::int64_t status)
{
    if (status == 0) {
        return {};
    }
    char text[24];
    std::snprintf(text, sizeof text, " = 0x%08X", static_cast<unsigned>(status));
    return text;
}

bool MacState::gone(const std::string& name, const std::string& how)
{
    const auto found = alive.find(name);
    if (found == alive.end()) {
        wrong(how + " of " + name + ", which is not there");
        return false;
    }
    if (--found->second == 0) {
        alive.erase(found);
    }
    return true;
}

io_object_t MacState::add(RegistryObject object)
{
    made(object.name);
    objects[++lastObject] = std::move(object);
    return lastObject;
}

std::string MacState::nameOf(io_object_t object) const
{
    if (object == IO_OBJECT_NULL) {
        return "none";
    }
    const auto found = objects.find(object);
    return found != objects.end() ? found->second.name : "something unknown";
}

DevicePointer MacState::attach(MacDevice device)
{
    auto made = std::make_shared<AttachedDevice>(std::move(device), attached.size());
    attached.push_back(made);
    return made;
}

void MacState::notify(const std::string& kind, const DevicePointer& device)
{
    for (const Notification& each : notifications) {
        if (each.kind == kind) {
            objects.at(each.list).devices.push_back(device);
        }
    }
}

FakeMacos::FakeMacos() : m_state(std::make_shared<MacState>(this))
{
    const std::lock_guard lock(currentMutex);
    current = m_state;
}

FakeMacos::~FakeMacos()
{
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->machine = nullptr;
    }
    const std::lock_guard lock(currentMutex);
    if (current == m_state) {
        current.reset();
    }
}

std::vector<std::string> FakeMacos::calls() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->calls;
}

void FakeMacos::forgetCalls()
{
    const std::lock_guard lock(m_state->mutex);
    m_state->calls.clear();
}

std::vector<std::string> FakeMacos::alive() const
{
    const std::lock_guard lock(m_state->mutex);
    std::vector<std::string> names;
    for (const auto& [name, references] : m_state->alive) {
        names.insert(names.end(), static_cast<std::size_t>(references), name);
    }
    return names;
}

std::vector<std::string> FakeMacos::misuse() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->misuse;
}

void FakeMacos::reclaim()
{
    const std::lock_guard lock(m_state->mutex);
    for (const auto& [client, destroy] : m_state->clients) {
        destroy(client);
    }
    m_state->clients.clear();
}

void FakeMacos::plug(MacDevice device)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->notify(kIOFirstMatchNotification, m_state->attach(std::move(device)));
}

void FakeMacos::unplug(std::size_t place)
{
    const std::lock_guard lock(m_state->mutex);
    const DevicePointer device = m_state->attached.at(place);
    device->present = false;
    m_state->attached.erase(m_state->attached.begin() + static_cast<std::ptrdiff_t>(place));
    m_state->notify(kIOTerminatedNotification, device);
}

void FakeMacos::attach(std::vector<MacDevice> devices)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->attached.clear();
    for (MacDevice& device : devices) {
        m_state->attach(std::move(device));
    }
}

void FakeMacos::turnRunLoop()
{
    const void* const ownLoop = ownRunLoop();
    std::vector<Notification> due;
    {
        const std::lock_guard lock(m_state->mutex);
        for (const Notification& each : m_state->notifications) {
            const auto loop = m_state->runLoopOfPort.find(each.port);
            RegistryObject& list = m_state->objects.at(each.list);
            if (loop != m_state->runLoopOfPort.end() && loop->second == ownLoop && list.exhausted &&
                !list.devices.empty()) {
                list.exhausted = false;
                due.push_back(each);
            }
        }
    }
    for (const Notification& each : due) {
        each.callback(each.reference, each.list);
    }
}

} // namespace vornadel::test

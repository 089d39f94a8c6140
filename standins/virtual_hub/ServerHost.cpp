#include "standins/virtual_hub/ServerHost.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace vornadel
{

/// The list of devices as one connection sees it.
class ServerHost::Client final : public ExportList
{
public:
    Client(ServerHost& host, std::uint64_t number) : m_host(host), m_number(number) {}

    std::vector<ExportedDevice> devices() override { return m_host.devices(); }
    OperationStatus import(const std::string& busId, ExportedDevice& device) override
    {
        return m_host.import(m_number, busId, device);
    }

private:
    ServerHost& m_host;
    const std::uint64_t m_number;
};

namespace
{

/// A conversation that owns the list it reads.
class ClientConversation final : public Conversation
{
public:
    explicit ClientConversation(std::unique_ptr<ExportList> list)
        : m_list(std::move(list)), m_talk(*m_list)
    {
    }

    Step step(ByteView in, std::size_t& taken, ByteBuffer& out) override
    {
        return m_talk.step(in, taken, out);
    }
    void leave(ByteBuffer& out) override { m_talk.leave(out); }

private:
    const std::unique_ptr<ExportList> m_list;
    ServerConversation m_talk;
};

std::string busIdOf(unsigned hub, HubSpeed half)
{
    return (half == HubSpeed::SuperSpeed ? "2-" : "1-") + std::to_string(hub);
}

/// Whether the process or the machine has temporarily run out of files or memory.
bool isShortage(int problem)
{
    return problem == EMFILE || problem == ENFILE || problem == ENOBUFS || problem == ENOMEM;
}

/// A socket that listens on the loopback address; negative on failure, with errno set.
int listenOn(std::uint16_t port, sockaddr_in& address)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const int yes = 1;
    address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    if (listener >= 0 && setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) == 0 &&
        bind(listener, general, size) == 0 && ::listen(listener, SOMAXCONN) == 0 &&
        getsockname(listener, general, &size) == 0) {
        return listener;
    }
    const int problem = errno;
    if (listener >= 0) {
        close(listener);
    }
    errno = problem;
    return -1;
}

} // namespace

ServerHost::~ServerHost()
{
    std::map<std::uint64_t, std::shared_ptr<DeviceLink>> links;
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    if (m_thread.joinable()) {
        eventfd_write(m_wakeUp, 1);
        m_thread.join();
    }
    {
        const std::lock_guard lock(m_mutex);
        links.swap(m_links);
    }
    for (const auto& [client, link] : links) {
        link->leave();
    }
    links.clear();
    if (m_listener >= 0) {
        close(m_listener);
        close(m_wakeUp);
    }
}

bool ServerHost::listen(std::uint16_t port, std::string& error)
{
    sockaddr_in address = {};
    m_listener = listenOn(port, address);
    if (m_listener < 0) {
        error = "cannot listen on port " + std::to_string(port) +
                " of 127.0.0.1: " + std::strerror(errno);
        return false;
    }
    m_port = ntohs(address.sin_port);
    m_wakeUp = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (m_wakeUp < 0) {
        error = "cannot create an event for the server: " + std::string(std::strerror(errno));
        return false;
    }
    try {
        m_thread = std::thread([this] { acceptClients(); });
    } catch (const std::system_error& problem) {
        error = "cannot start a thread for the server: " + std::string(problem.what());
        return false;
    }
    return true;
}

void ServerHost::acceptClients()
{
    constexpr int kShortageMs = 50; // poll() would return at once for a client still waiting
    bool shortage = false;
    for (;;) {
        std::array<pollfd, 2> events = {
            {{shortage ? -1 : m_listener, POLLIN, 0}, {m_wakeUp, POLLIN, 0}}};
        if (poll(events.data(), events.size(), shortage ? kShortageMs : -1) < 0 && errno != EINTR) {
            return;
        }
        eventfd_t ignored = 0;
        eventfd_read(m_wakeUp, &ignored);
        sweep();
        {
            const std::lock_guard lock(m_mutex);
            if (m_ending) {
                return;
            }
        }
        const int socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        shortage = socket < 0 && isShortage(errno);
        if (socket >= 0) {
            welcome(socket);
        }
    }
}

void ServerHost::welcome(int socket)
{
    const int yes = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes,
               sizeof yes);              // many small messages, each awaited
    const std::lock_guard lock(m_mutex); // so that the link is known before its thread asks
    if (m_links.size() >= kMostConnections) {
        close(socket);
        return;
    }
    const std::uint64_t number = ++m_lastClient;
    try {
        // First, so that no link is destroyed with the lock held.
        std::shared_ptr<DeviceLink>& link = m_links[number];
        link = std::make_shared<DeviceLink>(
            socket, std::make_unique<ClientConversation>(std::make_unique<Client>(*this, number)),
            m_clock, [this, number] { forget(number); });
    } catch (const std::exception&) { // no thread, file or memory left
        m_links.erase(number);
        close(socket);
    }
}

/// Runs on the link's own thread, which therefore cannot destroy the link.
void ServerHost::forget(std::uint64_t client)
{
    const std::lock_guard lock(m_mutex);
    for (auto& [half, exported] : m_exports) {
        exported.client = exported.client == client ? 0 : exported.client;
    }
    m_ended.push_back(client);
    eventfd_write(m_wakeUp, 1);
}

void ServerHost::sweep()
{
    std::vector<std::shared_ptr<DeviceLink>> done; // destroyed without the lock
    const std::lock_guard lock(m_mutex);
    for (const std::uint64_t client : m_ended) {
        const auto link = m_links.find(client);
        if (link != m_links.end()) {
            done.push_back(std::move(link->second));
            m_links.erase(link);
        }
    }
    m_ended.clear();
}

std::vector<ExportedDevice> ServerHost::devices()
{
    const std::lock_guard lock(m_mutex);
    std::vector<ExportedDevice> list;
    for (const auto& [half, exported] : m_exports) {
        list.push_back(exported.device);
    }
    return list;
}

OperationStatus ServerHost::import(std::uint64_t client, const std::string& busId,
                                   ExportedDevice& device)
{
    const std::lock_guard lock(m_mutex);
    const auto found = std::find_if(m_exports.begin(), m_exports.end(), [&](const auto& exported) {
        return exported.second.device.busId == busId;
    });
    if (found == m_exports.end()) {
        return OperationStatus::NoDevice;
    }
    if (found->second.client != 0) {
        return OperationStatus::Busy;
    }
    found->second.client = client;
    device = found->second.device;
    return OperationStatus::Ok;
}

bool ServerHost::attach(const VirtualDevice& device, std::string& /*error*/)
{
    const std::lock_guard lock(m_mutex);
    m_exports[{device.hub, device.half}] = {{busIdOf(device.hub, device.half), device}, 0};
    return true;
}

void ServerHost::beginDetach(unsigned hub, HubSpeed half)
{
    const std::lock_guard lock(m_mutex);
    const auto exported = m_exports.find({hub, half});
    if (exported == m_exports.end()) {
        return;
    }
    const auto link = m_links.find(exported->second.client);
    if (link != m_links.end()) {
        link->second->leave();
        m_departures[{hub, half}] = link->second;
    }
    m_exports.erase(exported);
}

void ServerHost::finishDetach(unsigned hub, HubSpeed half)
{
    std::shared_ptr<DeviceLink> link;
    {
        const std::lock_guard lock(m_mutex);
        const auto departure = m_departures.find({hub, half});
        if (departure == m_departures.end()) {
            return;
        }
        link = std::move(departure->second);
        m_departures.erase(departure);
    }
    link->join();
}

std::string ServerHost::busId(unsigned hub, HubSpeed half)
{
    const std::lock_guard lock(m_mutex);
    const auto exported = m_exports.find({hub, half});
    return exported != m_exports.end() ? exported->second.device.busId : std::string();
}

} // namespace vornadel

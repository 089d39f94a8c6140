#pragma once

#include "platform/Clock.h"
#include "standins/virtual_hub/DeviceLink.h"
#include "standins/virtual_hub/HubHost.h"
#include "standins/virtual_hub/ServerConversation.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vornadel
{

/// Exports the halves over USB/IP to programs on this machine. The bus ids are 1-N for the
/// high-speed half of hub N and 2-N for its SuperSpeed half. When a half leaves, its client's
/// connection is closed; the client imports it again when it is back.
class ServerHost final : public HubHost
{
public:
    /// Connections beyond this number are closed at once.
    static constexpr std::size_t kMostConnections = 64;

    explicit ServerHost(Clock& clock) : m_clock(clock) {}
    ~ServerHost() override;

    /// Listens on 127.0.0.1; port 0 means any free one. False and a sentence in `error` on failure.
    /// Call it once.
    bool listen(std::uint16_t port, std::string& error);
    std::uint16_t port() const { return m_port; } ///< after listen()

    bool attach(const VirtualDevice& device, std::string& error) override;
    void beginDetach(unsigned hub, HubSpeed half) override;
    void finishDetach(unsigned hub, HubSpeed half) override;
    std::string busId(unsigned hub, HubSpeed half) override;

private:
    class Client;
    using Half = std::pair<unsigned, HubSpeed>;
    struct Export {
        ExportedDevice device;
        std::uint64_t client = 0; // who has imported it; 0: nobody
    };

    void acceptClients();
    void welcome(int socket);
    void sweep();
    std::vector<ExportedDevice> devices();
    OperationStatus import(std::uint64_t client, const std::string& busId, ExportedDevice& device);
    void forget(std::uint64_t client);

    Clock& m_clock;
    int m_listener = -1;
    int m_wakeUp = -1; // becomes readable when there are ended links, or at the end
    std::uint16_t m_port = 0;

    std::mutex m_mutex; // guards what follows
    std::map<Half, Export> m_exports;
    // Between beginDetach() and finishDetach().
    std::map<Half, std::shared_ptr<DeviceLink>> m_departures;
    std::map<std::uint64_t, std::shared_ptr<DeviceLink>> m_links;
    std::vector<std::uint64_t> m_ended; // links whose thread is ending
    std::uint64_t m_lastClient = 0;
    bool m_ending = false;

    std::thread m_thread;
};

} // namespace vornadel

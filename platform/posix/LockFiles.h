#pragma once

#include "platform/UsbPlace.h"

#include <memory>
#include <string>
#include <vector>

namespace vornadel
{

/// The locks of places, across processes and users: one file for each place, such as
/// vornadel-2-3_1-3.lock, in a folder in which every user may create files. The files stay there,
/// empty. The kernel holds the lock, so it ends with the process. Whatever is not such a file
/// counts as locked by somebody unknown.
///
/// Any number of objects may share a folder. Locks may outlive their object.
class LockFiles final : public PlaceLocks
{
public:
    /// Uses the first of the folders in which every user may create files and only the owner of a
    /// file may remove it. If there is none, no place can be locked.
    explicit LockFiles(const std::vector<std::string>& folders);

    std::unique_ptr<PlaceLock> lock(const UsbPlace& place, UsbIds ids, PlaceOwner& owner) override;
    std::vector<PlaceOwner> owners() override;

private:
    std::string fileOf(const std::string& place) const;

    std::string m_folder; // empty: none
};

} // namespace vornadel

#pragma once

#include <QGenericPlugin>

namespace vornadel::test
{

/// Qt finds the remote control of the window program with QT_QPA_GENERIC_PLUGINS=windowremote and
/// QT_PLUGIN_PATH set to the folder above `generic`. WindowRemote.cpp describes its protocol.
class WindowRemotePlugin final : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "window_remote.json")

public:
    QObject* create(const QString& name, const QString& argument) override;
};

} // namespace vornadel::test

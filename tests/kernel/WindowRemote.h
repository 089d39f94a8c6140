#pragma once

#include <QGenericPlugin>

namespace vornadel::test
{

/// How Qt finds the remote of the window program: QT_QPA_GENERIC_PLUGINS=windowremote, and
/// QT_PLUGIN_PATH with the folder above `generic`. What it says and takes is in WindowRemote.cpp.
class WindowRemotePlugin final : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "window_remote.json")

public:
    QObject* create(const QString& name, const QString& argument) override;
};

} // namespace vornadel::test

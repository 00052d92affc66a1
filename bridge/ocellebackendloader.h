// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMediaServiceProviderPlugin>
#include <QPluginLoader>
#include <QString>

#include <mutex>

/*!
 * Loads the back end's plugin, libocellebackend.so, from the folder this code was loaded from.
 *
 * Threads: any thread. The first call of backend() loads, others wait for it.
 * Owner:   OcelleBridge, by value.
 * Errors:  a back end that is missing or does not load is logged once, as a warning that says what
 *          was looked for, where, and what to do; backend() is null then and stays null.
 */
class OcelleBackendLoader
{
public:
    OcelleBackendLoader() = default;
    OcelleBackendLoader(const OcelleBackendLoader &) = delete;
    OcelleBackendLoader &operator=(const OcelleBackendLoader &) = delete;

    /*! The back end, owned by Qt's plugin system; null where there is none. */
    QMediaServiceProviderPlugin *backend();

    /*! Gives the back end back: Qt deletes it if nobody else in the process loaded it too. */
    void unload();

private:
    void load();
    void forget();
    void warn(const QString &reason) const;

    std::once_flag m_once;                            // guards the first use of all below
    QPluginLoader m_loader;                           // written by load(), by unload() at the end
    QMediaServiceProviderPlugin *m_backend = nullptr; // written by load(); not owned
};

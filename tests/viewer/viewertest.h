// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "homefolder.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <patternreader.h>
#include <viewerwindow.h>

#include <memory>
#include <optional>

/*! Base of tests of the real window, driven by keys and looked at by its pixels and objects. */
class ViewerTest : public QObject
{
protected:
    /*! Shows a new window; the one before has gone then. */
    void open(const Viewer::ViewerOptions &options = {}, QSize size = QSize(1280, 800));
    /*! Without a window, in an empty home. */
    void reset();
    QQuickWindow *window() const { return m_window; }
    const HomeFolder &home() const { return m_home; }

    QObject *find(const char *name) const;
    QQuickItem *item(const char *name) const { return qobject_cast<QQuickItem *>(find(name)); }
    QString textOf(const char *message) const; // while it is shown
    QObject *view(const char *property) const;
    std::optional<Veltra::Ocelle::PatternReading> reading() const;
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

private:
    HomeFolder m_home;
    std::unique_ptr<Viewer::ViewerWindow> m_viewer;
    QQuickWindow *m_window = nullptr;
};

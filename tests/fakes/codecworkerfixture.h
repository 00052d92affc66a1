// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "calllog.h"

#include <QList>
#include <QObject>

/*!
 * A worker on the test's own thread, which therefore decides when it works, beside the session of a
 * service, which reports its errors.
 */
template <class ServiceFixture, class Worker>
class CodecWorkerFixture : public ServiceFixture
{
public:
    CodecWorkerFixture()
        : worker(this->session())
    {
        CallLog::instance().clear();
        QObject::connect(&worker, &Worker::statusChanged,
                         [this](int status) { statuses.append(status); });
        QObject::connect(&worker, &Worker::needData,
                         [this](unsigned int hint) { hints.append(hint); });
    }

    Worker worker;
    QList<int> statuses;
    QList<unsigned int> hints;

protected:
    int nextNumber() { return ++m_made; } // of a codec that a test makes

private:
    int m_made = 0;
};

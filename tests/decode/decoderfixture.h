// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "decodeservicefixture.h"
#include "fakedecoderscript.h"
#include "fakevideodecoder.h"
#include "messagelog.h"
#include "ocelledecoder.h"

#include <QList>
#include <QStringList>

#include <memory>

/*! A decoder object over a scripted decoder, "decoder 1", that the test shares. */
class DecoderFixture
{
public:
    DecoderFixture();

    std::shared_ptr<FakeVideoDecoder> make(int number) const;
    /*! Brings it to \a status, by way of all before; it holds the decoder unless unloaded. */
    void bringTo(int status);
    QStringList calls() const; // everybody's, and each "status: N"

    MessageLog messages;
    std::shared_ptr<FakeDecoderScript> script;
    std::shared_ptr<FakeVideoDecoder> fake;
    OcelleDecoder decoder;
    QList<int> statuses;
};

/*! A row "status" for each status that the decoder object knows. */
void addStatusRows();

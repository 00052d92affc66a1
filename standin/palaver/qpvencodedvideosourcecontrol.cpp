#include "qpvmetatypes.h"

#include <palaver/qpvencodedvideosourcecontrol.h>

QPVEncodedVideoSourceControl::QPVEncodedVideoSourceControl(QObject *parent)
    : QMediaControl(parent)
{
    registerPalaverMetaTypes();
}

QPVEncodedVideoSourceControl::~QPVEncodedVideoSourceControl() = default;

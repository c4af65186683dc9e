#pragma once

#include "colour/KVLChColor.h"

#include <QMetaType>

// Lets an LCh colour travel in a notification's user info.
Q_DECLARE_METATYPE(tintorra::KVLChColor)

#pragma once

#include <QList>
#include <cstdint>

// The corners a watermark mask names, in corner order. The mask gives corner 3 the value 8 and
// corner 4 the value 4, so reading it as plain bit positions would swap them.
QList<int> watermarkCorners(int32_t mask);

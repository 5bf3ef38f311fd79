#include "watermark_corners.h"

#include <array>
#include <utility>

QList<int> watermarkCorners(int32_t mask) {
    static constexpr std::array<std::pair<int, int32_t>, 4> kCornerBits{
        {{1, 1}, {2, 2}, {3, 8}, {4, 4}}};
    QList<int> corners;
    for (const auto& [corner, bit] : kCornerBits) {
        if ((mask & bit) != 0) {
            corners.append(corner);
        }
    }
    return corners;
}

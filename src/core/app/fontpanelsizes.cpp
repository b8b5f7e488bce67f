#include "core/app/fontpanelsizes.h"

namespace lomir {

QStringList fontPanelSizeList()
{
    QStringList sizes;
    for (int size = 1; size <= 14; ++size)
        sizes.append(QString::number(size));
    for (int size : {18, 24, 36, 48})
        sizes.append(QString::number(size));
    return sizes;
}

} // namespace lomir

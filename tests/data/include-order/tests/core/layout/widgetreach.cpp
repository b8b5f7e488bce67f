// A core test reaching a widget header: the include order check must refuse it.
#include "gui/editor/labeltextview.h"

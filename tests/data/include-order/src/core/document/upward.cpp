// The document reaching up into the label's rules: the include order check must refuse it.
#include "core/document/upward.h"
#include "core/label/labelsize.h"

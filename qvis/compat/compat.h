// The compat layer in one include: value types, strings, arrays, files and archives, handles.
#ifndef QVIS_COMPAT_COMPAT_H_
#define QVIS_COMPAT_COMPAT_H_

#include "qvis/compat/archive.h"
#include "qvis/compat/carray.h"
#include "qvis/compat/cpoint.h"
#include "qvis/compat/cstring.h"
#include "qvis/compat/exceptions.h"
#include "qvis/compat/handles.h"
#include "qvis/compat/key_state.h"
#include "qvis/compat/message_box.h"
#include "qvis/compat/types.h"

#endif  // QVIS_COMPAT_COMPAT_H_

// SPDX-License-Identifier: MIT
// The owner of a reference to a GLib object.
#pragma once

#include <glib-object.h>

#include <memory>

namespace gwq::terminal {

struct GObjectUnref {
  void operator()(gpointer object) const { g_object_unref(object); }
};

template <typename T>
using GObjectPtr = std::unique_ptr<T, GObjectUnref>;

}  // namespace gwq::terminal

// A blur of what lies beneath a view: the picture drawn so far, blurred
// and tinted inside the view's shape.
#pragma once

#include <cairo.h>

namespace kv::sim::render {

// Fills the current path of `cr` with the pixels of `beneath` (the picture
// drawn so far, in device space) blurred, then with the tint of blur style
// `style` (UIBlurEffect's 0 extra light, 1 light, 2 dark; other numbers,
// such as the private backdrop styles, tint as light). Clears the path.
void fillWithBlur(cairo_t* cr, cairo_surface_t* beneath, long style);

}  // namespace kv::sim::render

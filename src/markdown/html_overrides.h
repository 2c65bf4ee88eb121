#pragma once

// Orvo's slots over the standard HTML renderer, chosen by render type:
// task list items, chart-aware code blocks, sized images, the math forms,
// the PDF ids and the Evernote forms. Plain C++, no Qt.

#include "markdown/ORVRenderType.h"
#include "markdown/html.h"

// The LaTeX image service that the math image render type points at: the
// math text, link-escaped, follows this prefix in the image URL.
inline constexpr const char *kORVLaTeXImageServiceURL = "https://latex.codecogs.com/svg.latex?";

// Replaces the slots of a standard HTML renderer for this render type.
// `isMath` tells whether math is on, which the Evernote and math image
// forms need.
void orvo_html_apply_overrides(hoedown_renderer *renderer, int renderType, bool isMath);

// Gives a table of contents renderer the heading line form of this render
// type (the Evernote line form, the PDF anchors, or the standard list).
void orvo_html_toc_apply_form(hoedown_renderer *renderer, int renderType);

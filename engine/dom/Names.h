// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/dom/Atom.h"

/// The names that the engine itself speaks of.
namespace dom::names {

#define DOM_NAME(name) inline const Atom name{#name};
DOM_NAME(a) DOM_NAME(abbr) DOM_NAME(acronym) DOM_NAME(address) DOM_NAME(applet) DOM_NAME(area) DOM_NAME(article)
DOM_NAME(aside) DOM_NAME(audio) DOM_NAME(b) DOM_NAME(base) DOM_NAME(basefont) DOM_NAME(bgsound) DOM_NAME(bdo)
DOM_NAME(big) DOM_NAME(blockquote) DOM_NAME(body) DOM_NAME(br) DOM_NAME(button) DOM_NAME(canvas) DOM_NAME(caption)
DOM_NAME(center) DOM_NAME(cite) DOM_NAME(code) DOM_NAME(col) DOM_NAME(colgroup) DOM_NAME(dd) DOM_NAME(del)
DOM_NAME(details) DOM_NAME(dfn) DOM_NAME(dialog) DOM_NAME(dir) DOM_NAME(div) DOM_NAME(dl) DOM_NAME(dt) DOM_NAME(em)
DOM_NAME(embed) DOM_NAME(fieldset) DOM_NAME(figcaption) DOM_NAME(figure) DOM_NAME(font) DOM_NAME(footer) DOM_NAME(form)
DOM_NAME(frame) DOM_NAME(frameset) DOM_NAME(h1) DOM_NAME(h2) DOM_NAME(h3) DOM_NAME(h4) DOM_NAME(h5) DOM_NAME(h6)
DOM_NAME(head) DOM_NAME(header) DOM_NAME(hgroup) DOM_NAME(hr) DOM_NAME(html) DOM_NAME(i) DOM_NAME(iframe) DOM_NAME(img)
DOM_NAME(input) DOM_NAME(ins) DOM_NAME(kbd) DOM_NAME(keygen) DOM_NAME(label) DOM_NAME(legend) DOM_NAME(li)
DOM_NAME(link) DOM_NAME(listing) DOM_NAME(main) DOM_NAME(map) DOM_NAME(mark) DOM_NAME(marquee) DOM_NAME(menu)
DOM_NAME(meta) DOM_NAME(nav) DOM_NAME(nobr) DOM_NAME(noembed) DOM_NAME(noframes) DOM_NAME(noscript) DOM_NAME(object)
DOM_NAME(ol) DOM_NAME(optgroup) DOM_NAME(option) DOM_NAME(p) DOM_NAME(param) DOM_NAME(plaintext) DOM_NAME(pre)
DOM_NAME(progress) DOM_NAME(q) DOM_NAME(s) DOM_NAME(samp) DOM_NAME(script) DOM_NAME(section) DOM_NAME(select)
DOM_NAME(small) DOM_NAME(source) DOM_NAME(span) DOM_NAME(strike) DOM_NAME(strong) DOM_NAME(style) DOM_NAME(sub)
DOM_NAME(summary) DOM_NAME(sup) DOM_NAME(svg) DOM_NAME(table) DOM_NAME(tbody) DOM_NAME(td) DOM_NAME(textarea)
DOM_NAME(tfoot) DOM_NAME(th) DOM_NAME(thead) DOM_NAME(title) DOM_NAME(tr) DOM_NAME(track) DOM_NAME(tt) DOM_NAME(u)
DOM_NAME(ul) DOM_NAME(var) DOM_NAME(video) DOM_NAME(wbr) DOM_NAME(xmp)
// Attributes
DOM_NAME(align) DOM_NAME(alink) DOM_NAME(alt) DOM_NAME(background) DOM_NAME(bgcolor) DOM_NAME(border)
DOM_NAME(bordercolor) DOM_NAME(cellpadding) DOM_NAME(cellspacing) DOM_NAME(clear) DOM_NAME(color) DOM_NAME(cols)
DOM_NAME(colspan) DOM_NAME(compact) DOM_NAME(contenteditable) DOM_NAME(dynsrc) DOM_NAME(face) DOM_NAME(height)
DOM_NAME(hidden) DOM_NAME(href) DOM_NAME(hspace) DOM_NAME(id) DOM_NAME(lang) DOM_NAME(media) DOM_NAME(name)
DOM_NAME(noshade) DOM_NAME(nowrap) DOM_NAME(rel) DOM_NAME(rows) DOM_NAME(rowspan) DOM_NAME(rules) DOM_NAME(scope)
DOM_NAME(size) DOM_NAME(src) DOM_NAME(start) DOM_NAME(target) DOM_NAME(text) DOM_NAME(type) DOM_NAME(usemap)
DOM_NAME(valign) DOM_NAME(value) DOM_NAME(vlink) DOM_NAME(vspace) DOM_NAME(width) DOM_NAME(xmlns)
#undef DOM_NAME
inline const Atom class_{"class"};
inline const Atom for_{"for"};
inline const Atom httpEquiv{"http-equiv"};

} // namespace dom::names

// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/css/UserAgentSheet.h"

namespace css {

QString userAgentSheetText()
{
    return QStringLiteral(R"css(
html, address, article, aside, blockquote, body, center, dd, details, dialog, dir, div, dl, dt, fieldset, figcaption,
figure, footer, form, frame, frameset, h1, h2, h3, h4, h5, h6, header, hgroup, hr, legend, listing, main, menu, nav,
noframes, ol, optgroup, option, p, plaintext, pre, search, section, summary, ul, xmp { display: block }
area, base, basefont, bgsound, datalist, head, link, meta, noembed, param, rp, script, style, template, title,
source, track { display: none }
li { display: list-item }
table { display: table; box-sizing: border-box; border-spacing: 2px; border-collapse: separate; text-indent: 0;
        border-color: gray }
tr { display: table-row; vertical-align: inherit; border-color: inherit }
thead { display: table-header-group; vertical-align: middle; border-color: inherit }
tbody { display: table-row-group; vertical-align: middle; border-color: inherit }
tfoot { display: table-footer-group; vertical-align: middle; border-color: inherit }
col { display: table-column }
colgroup { display: table-column-group }
td, th { display: table-cell; vertical-align: inherit; padding: 1px }
caption { display: table-caption; text-align: -webkit-center }
th { font-weight: bold; text-align: -internal-center }
body { margin: 8px }
p, dl, blockquote, figure, ul, ol, dir, menu, pre, listing, xmp, plaintext { margin-top: 1em; margin-bottom: 1em }
blockquote, figure { margin-left: 40px; margin-right: 40px }
dd { margin-inline-start: 40px }
ul, menu, dir { list-style-type: disc; padding-inline-start: 40px }
ol { list-style-type: decimal; padding-inline-start: 40px }
ul ul, ol ul, menu ul, dir ul, ul menu, ol menu, menu menu, ul dir, ol dir { list-style-type: circle }
ol ol ul, ol ul ul, ul ol ul, ul ul ul, ol ol menu, ol ul menu, ul ol menu, ul ul menu, ol ol dir, ol ul dir,
ul ol dir, ul ul dir { list-style-type: square }
ul ul, ul ol, ol ul, ol ol, ul menu, ul dir, ol menu, ol dir, menu ul, menu ol, dir ul, dir ol, dl ul, dl ol, ul dl,
ol dl, dl dl { margin-top: 0; margin-bottom: 0 }
h1 { font-size: 2em; margin-top: 0.67em; margin-bottom: 0.67em; font-weight: bold }
h2 { font-size: 1.5em; margin-top: 0.83em; margin-bottom: 0.83em; font-weight: bold }
h3 { font-size: 1.17em; margin-top: 1em; margin-bottom: 1em; font-weight: bold }
h4 { margin-top: 1.33em; margin-bottom: 1.33em; font-weight: bold }
h5 { font-size: 0.83em; margin-top: 1.67em; margin-bottom: 1.67em; font-weight: bold }
h6 { font-size: 0.67em; margin-top: 2.33em; margin-bottom: 2.33em; font-weight: bold }
b, strong { font-weight: bolder }
i, cite, em, var, dfn, address { font-style: italic }
tt, code, kbd, samp, pre, listing, xmp, plaintext { font-family: monospace }
pre, listing, xmp, plaintext { white-space: pre }
pre[wrap] { white-space: pre-wrap }
big { font-size: larger }
small { font-size: smaller }
sub { vertical-align: sub; font-size: smaller }
sup { vertical-align: super; font-size: smaller }
u, ins { text-decoration: underline }
s, strike, del { text-decoration: line-through }
abbr[title], acronym[title] { text-decoration: underline dotted }
mark { background-color: yellow; color: black }
nobr { white-space: nowrap }
center { text-align: -webkit-center }
hr { border: 1px inset gray; margin: 0.5em auto; color: gray; overflow: hidden; box-sizing: content-box }
a:link, area:link { color: #0000ee; text-decoration: underline; cursor: pointer }
q { display: inline }
q::before { content: open-quote }
q::after { content: close-quote }
ruby { display: inline }
rt { font-size: 50% }
bdi, output { unicode-bidi: isolate }
bdo { unicode-bidi: bidi-override }
[dir=ltr] { direction: ltr; unicode-bidi: isolate }
[dir=rtl] { direction: rtl; unicode-bidi: isolate }
[dir=auto] { unicode-bidi: isolate }
bdo[dir=ltr], bdo[dir=rtl] { unicode-bidi: bidi-override }
bdo[dir=auto] { unicode-bidi: isolate-override }
[hidden] { display: none }
embed[hidden] { display: inline; height: 0; width: 0 }
iframe { border: 2px inset #eeeeee; overflow: hidden }
video { object-fit: contain }
audio { display: none }
audio[controls] { display: inline-block }
fieldset { margin-left: 2px; margin-right: 2px; border: 2px groove #c0c0c0; padding: 0.35em 0.75em 0.625em; min-width: min-content }
legend { padding-left: 2px; padding-right: 2px }
input, textarea, select, button { display: inline-block; margin: 0; font: 400 13.3333px Arial, sans-serif;
    color: black; letter-spacing: normal; word-spacing: normal; text-transform: none; text-indent: 0; text-align: start;
    line-height: normal; text-shadow: none; cursor: text }
input { padding: 1px 2px; border: 2px inset #767676; background-color: white; white-space: pre; overflow: hidden }
textarea { padding: 2px; border: 1px solid #767676; background-color: white; font-family: monospace;
    white-space: pre-wrap; overflow-wrap: break-word; overflow: auto }
select { border: 1px solid #767676; background-color: white; white-space: pre; box-sizing: border-box; overflow: hidden;
    cursor: default }
button, input[type=button], input[type=submit], input[type=reset] { padding: 1px 6px; border: 2px outset #767676;
    background-color: #efefef; text-align: center; box-sizing: border-box; cursor: default }
button { white-space: normal }
input[type=checkbox], input[type=radio] { margin: 3px 3px 3px 4px; padding: 0; border: 0; box-sizing: border-box;
    width: 13px; height: 13px; cursor: default; background-color: transparent }
input[type=radio] { margin: 3px 3px 0 5px }
input[type=range] { margin: 2px }
input[type=hidden] { display: none }
input[type=image] { padding: 0; border: 0; background-color: transparent; cursor: pointer }
select option { display: none }
marquee { display: inline-block; text-align: start; overflow: hidden }
meter, progress { display: inline-block; width: 10em; height: 1em; vertical-align: -0.2em }
meter { width: 5em }
details > summary { display: list-item; list-style-position: inside; list-style-type: "\25BA  " }
details[open] > summary { list-style-type: "\25BC  " }
dialog:not([open]) { display: none }
dialog { position: absolute; left: 0; right: 0; margin: auto; border: 1px solid black; padding: 1em; background-color: white; color: black; width: fit-content; height: fit-content }
slot { display: contents }
)css");
}

QString quirksSheetText()
{
    return QStringLiteral(R"css(
table { font-weight: normal; font-style: normal; font-variant: normal; font-size: medium; line-height: normal;
        white-space: normal; text-align: start }
img[align=left] { margin-right: 3px }
img[align=right] { margin-left: 3px }
input, textarea, button, select { box-sizing: border-box }
form { margin-bottom: 1em }
)css");
}

} // namespace css

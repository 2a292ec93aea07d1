// SPDX-License-Identifier: GPL-3.0-or-later
// Records what Chromium makes of pages, for tst_fidelity and tst_gallery:
//
//     node tests/fidelity/record.mjs [--modules DIR] [--no-picture] FOLDER...
//
// A FOLDER holds a page in src/ (src/index.html, or what meta.json calls "entry"); a folder of such folders is walked.
// Beside src/ are written: meta.json where there is none, expected.json.gz (the boxes) and shot.png (the first screen).
//
// Needs: Debian's chromium (or CHROMIUM=program), node, playwright-core from npm (found in DIR/node_modules, in NODE_PATH
// or from here upwards), and the fonts of fonts-liberation and fonts-dejavu-core. Whatever other fonts are installed is
// hidden from the browser by a fontconfig file of our own, so that everybody records the same boxes.
import { createRequire } from 'node:module';
import { existsSync, mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { basename, join, resolve } from 'node:path';
import { tmpdir } from 'node:os';
import { pathToFileURL } from 'node:url';
import { gzipSync } from 'node:zlib';

const options = process.argv.slice(2);
const folders = [];
let modules = import.meta.url;
let picture = true;
while (options.length) {
    const option = options.shift();
    if (option === '--modules') modules = pathToFileURL(resolve(options.shift(), 'x.js')).href;
    else if (option === '--no-picture') picture = false;
    else folders.push(resolve(option));
}
if (!folders.length) throw new Error('Name at least one folder');
const { chromium } = createRequire(modules)('playwright-core');

// Only what the two packages hold: the further faces of fonts-dejavu-extra would change what bold and slanted text uses.
function fontsFile(folder) {
    const file = join(folder, 'fonts.conf');
    const hidden = ['*Condensed*', '*Oblique*', 'DejaVuSerif*Italic*', '*ExtraLight*', '*TeXGyre*'];
    writeFileSync(file, `<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd"><fontconfig>
<dir>/usr/share/fonts/truetype/liberation</dir><dir>/usr/share/fonts/truetype/dejavu</dir>
<include ignore_missing="yes">/etc/fonts/conf.d</include><cachedir>${folder}</cachedir>
<selectfont><rejectfont>${hidden.map(each => `<glob>/usr/share/fonts/truetype/dejavu/${each}</glob>`).join('')}
<glob>/usr/share/fonts/truetype/liberation/*Narrow*</glob></rejectfont></selectfont></fontconfig>`);
    return file;
}

// Runs in the page. A path is the indices of child elements from the root, which is "0".
function boxesOfPage() {
    const rounded = value => (typeof value === 'number' ? Math.round(value * 100) / 100 : null);
    const left = scrollX, top = scrollY;
    const rows = [], text = [];
    const visitText = (node, path, index) => {
        if (!node.data.trim()) return;
        const range = document.createRange();
        range.selectNodeContents(node);
        const parts = [...range.getClientRects()].filter(each => each.width > 0);
        if (!parts.length) return;
        // One line may give several rectangles where the direction changes.
        const lines = new Set(parts.map(each => Math.round(each.top + top))).size;
        const first = parts[0], last = parts[parts.length - 1];
        text.push([path, index, node.length, lines, rounded(first.left + left), rounded(first.top + top),
                   rounded(first.height), rounded(last.right + left), rounded(last.bottom + top)]);
    };
    const pending = [[document.documentElement, '0']];
    while (pending.length) {
        const [element, path] = pending.pop();
        const style = getComputedStyle(element), box = element.getBoundingClientRect();
        rows.push([path, element.localName, element.offsetLeft ?? null, element.offsetTop ?? null,
                   element.offsetWidth ?? null, element.offsetHeight ?? null, rounded(box.x + left), rounded(box.y + top),
                   rounded(box.width), rounded(box.height), style.display, style.position === 'static' ? '' : style.position,
                   style.cssFloat === 'none' ? '' : style.cssFloat, element.getClientRects().length]);
        let index = 0;
        for (const node of element.childNodes) {
            if (node.nodeType === Node.TEXT_NODE && style.display !== 'none') visitText(node, path, index);
            ++index;
        }
        for (let i = element.children.length - 1; i >= 0; --i) pending.push([element.children[i], `${path}.${i}`]);
    }
    const root = document.documentElement;
    return {
        mode: document.compatMode, charset: document.characterSet, title: document.title,
        scroll: [root.scrollWidth, root.scrollHeight], rows, text,
        columns: ['path', 'tag', 'offsetLeft', 'offsetTop', 'offsetWidth', 'offsetHeight', 'x', 'y', 'width', 'height',
                  'display', 'position', 'float', 'rectangles'],
        textColumns: ['path', 'node', 'length', 'lines', 'x', 'y', 'height', 'right', 'bottom'],
    };
}

async function record(context, folder) {
    const metaFile = join(folder, 'meta.json');
    if (!existsSync(metaFile)) writeFileSync(metaFile, JSON.stringify({ entry: 'src/index.html' }, null, 1) + '\n');
    const entry = JSON.parse(readFileSync(metaFile, 'utf8')).entry;
    const page = await context.newPage();
    await page.route('**/*', route => (/^(file|data):/.test(route.request().url()) ? route.continue() : route.abort()));
    await page.goto(pathToFileURL(join(folder, entry)).href, { waitUntil: 'load' });
    if (picture) await page.screenshot({ path: join(folder, 'shot.png') });
    const boxes = await page.evaluate(boxesOfPage);
    writeFileSync(join(folder, 'expected.json.gz'), gzipSync(JSON.stringify(boxes), { level: 9 }));
    await page.close();
    console.log(`${basename(folder)}: ${boxes.rows.length} elements, ${boxes.text.length} texts, ${boxes.mode}`);
}

const scratch = mkdtempSync(join(tmpdir(), 'record-'));
const browser = await chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-gpu'],
    env: { ...process.env, FONTCONFIG_FILE: fontsFile(scratch) },
});
try {
    // Without scripts of their own, pages are the same document here and in the editor.
    const context = await browser.newContext({
        viewport: { width: 1000, height: 800 }, deviceScaleFactor: 1, javaScriptEnabled: false, colorScheme: 'light', locale: 'en-US',
    });
    for (const folder of folders) {
        const pages = existsSync(join(folder, 'src')) ? [folder] : readdirSync(folder).sort().map(name => join(folder, name));
        for (const each of pages)
            if (existsSync(join(each, 'src'))) await record(context, each);
    }
} finally {
    await browser.close();
    rmSync(scratch, { recursive: true, force: true });
}

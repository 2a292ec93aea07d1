// SPDX-License-Identifier: GPL-3.0-or-later
// Ours beside QTextEdit and Chromium's contenteditable, on the same generated pages, in one run on one machine:
//
//     benchmarks/peers/run                all rows
//     benchmarks/peers/run load find      some of them
//
// Milliseconds, medians; memory in MiB (proportional set sizes of all processes). A keystroke, Enter and undo include the
// layout that a question about a box forces, not the painting. The ratio is the better peer's figure over ours.
import { execFileSync, spawn } from 'node:child_process';
import { mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';

const [program, modules, ...asked] = process.argv.slice(2);
const { chromium } = createRequire(pathToFileURL(join(modules, 'x.js')))('playwright-core');
const allRows = ['load', 'keystroke', 'enter', 'undo', 'serialise', 'find', 'memory', 'start'];
const rows = asked.length ? asked : allRows;
const sizes = { load: [100, 1024, 5120], keystroke: [100, 1024, 5120], enter: [100, 1024, 5120], undo: [100, 1024, 5120],
                serialise: [1024, 5120], find: [1024, 5120], memory: [0, 1024], start: [100] };
const figures = {}; // "row size" to { ours, qtextedit, chromium }
const note = (row, size, who, value) => ((figures[`${row} ${size}`] ??= {})[who] = value);
const median = values => [...values].sort((a, b) => a - b)[Math.floor(values.length / 2)];
const page = size => (size ? execFileSync(program, ['page', String(size)], { maxBuffer: 1 << 28 }).toString() : '<p>&nbsp;</p>');

function measureQt(who) {
    const own = rows.filter(row => row !== 'start');
    for (const row of own) { // a process each: what one row leaves behind mustn't weigh on the next
        for (const line of execFileSync(program, [who, row]).toString().trim().split('\n')) {
            const [name, size, value] = line.split(' ');
            note(name, size, who, Number(value));
        }
    }
}

// Runs in the page: the subject is a frame whose body is editable, so that loading can be timed from within.
function setUp() {
    const frame = document.createElement('iframe');
    frame.style.cssText = 'width:1000px;height:800px;border:0';
    document.body.append(frame);
    const timed = work => {
        const start = performance.now();
        work();
        void frame.contentDocument.body.offsetHeight;
        return performance.now() - start;
    };
    const the = {
        load: html => timed(() => {
            const inner = frame.contentDocument;
            inner.open();
            inner.write(html);
            inner.close();
            inner.body.contentEditable = 'true';
        }),
        toMiddle: () => {
            const paragraphs = [...frame.contentDocument.querySelectorAll('p')].filter(each => each.textContent.length > 20);
            const walker = frame.contentDocument.createTreeWalker(paragraphs[paragraphs.length >> 1], NodeFilter.SHOW_TEXT);
            const text = walker.nextNode();
            frame.contentDocument.body.focus();
            frame.contentWindow.getSelection().collapse(text, Math.min(20, text.length));
        },
        command: (name, value) => timed(() => frame.contentDocument.execCommand(name, false, value)),
        serialise: () => timed(() => frame.contentDocument.documentElement.outerHTML.length),
        find: text => timed(() => {
            frame.contentWindow.getSelection().collapse(frame.contentDocument.body, 0);
            while (frame.contentWindow.find(text, true, false, false));
        }),
    };
    window.the = the;
}

function measureInPage([row, html]) {
    const repeat = (times, work) => Array.from({ length: times }, work);
    const middle = values => values.sort((a, b) => a - b)[values.length >> 1];
    const long = html.length > 2e6;
    const first = the.load(html);
    if (row === 'load') return middle([first, ...repeat(long ? 4 : 10, () => the.load(html))]);
    the.toMiddle();
    if (row === 'keystroke') return middle(repeat(51, () => the.command('insertText', 'x')));
    if (row === 'enter') return middle(repeat(21, () => (the.toMiddle(), the.command('insertParagraph'))));
    if (row === 'undo') return middle(repeat(21, () => (the.command('insertText', 'x'), the.command('undo'))));
    if (row === 'serialise') return middle(repeat(11, () => the.serialise()));
    if (row === 'find') return middle(repeat(long ? 1 : 3, () => the.find('the')));
}

// Of a process and all that it started.
function memoryOf(root) {
    const parents = new Map();
    for (const name of readdirSync('/proc').filter(each => /^\d+$/.test(each))) {
        try {
            parents.set(Number(name), Number(readFileSync(`/proc/${name}/stat`, 'utf8').split(') ')[1].split(' ')[1]));
        } catch { /* it has ended meanwhile */ }
    }
    const within = id => id === root || (parents.has(id) && parents.get(id) > 1 && within(parents.get(id)));
    let sum = 0;
    for (const id of parents.keys()) {
        if (!within(id)) continue;
        try {
            sum += Number(/^Pss:\s+(\d+)/m.exec(readFileSync(`/proc/${id}/smaps_rollup`, 'utf8'))[1]);
        } catch { /* as above */ }
    }
    return sum / 1024;
}

const browserOptions = { executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', args: ['--no-sandbox', '--disable-gpu'] };

async function measureChromium() {
    for (const row of rows.filter(each => sizes[each] && each !== 'start')) {
        for (const size of sizes[row]) {
            const server = await chromium.launchServer(browserOptions);
            const browser = await chromium.connect(server.wsEndpoint());
            const tab = await browser.newPage({ viewport: { width: 1000, height: 800 } });
            await tab.setContent('<body style="margin:0">');
            await tab.evaluate(setUp);
            if (row === 'memory') {
                await tab.evaluate(html => the.load(html), page(size));
                note(row, size, 'chromium', memoryOf(server.process().pid));
            } else {
                note(row, size, 'chromium', await tab.evaluate(measureInPage, [row, page(size)]));
            }
            await browser.close();
            await server.close();
        }
    }
}

async function measureStart(folder) {
    const file = join(folder, 'page.html');
    writeFileSync(file, page(100));
    const ready = who => new Promise((resolve, reject) => {
        const start = performance.now();
        const child = spawn(program, [who, 'open', file]);
        child.stdout.once('data', () => resolve(performance.now() - start));
        child.once('error', reject);
    });
    for (const who of ['ours', 'qtextedit']) {
        const times = [];
        for (let i = 0; i < 7; ++i) times.push(await ready(who));
        note('start', 100, who, median(times));
    }
    const times = [];
    for (let i = 0; i < 5; ++i) {
        const start = performance.now();
        const browser = await chromium.launch(browserOptions);
        const tab = await browser.newPage();
        await tab.goto(pathToFileURL(file).href);
        await tab.evaluate(() => document.body.offsetHeight);
        times.push(performance.now() - start);
        await browser.close();
    }
    note('start', 100, 'chromium', median(times));
}

const folder = mkdtempSync(join(tmpdir(), 'peers-'));
try {
    measureQt('ours');
    measureQt('qtextedit');
    await measureChromium();
    if (rows.includes('start')) await measureStart(folder);
} finally {
    rmSync(folder, { recursive: true, force: true });
}
const cell = value => (value === undefined ? '-' : String(Number(value.toPrecision(3)))).padStart(10);
console.log(`${'row'.padEnd(12)}${'KB'.padStart(6)}${['ours', 'QTextEdit', 'Chromium', 'ratio'].map(each => each.padStart(10)).join('')}`);
for (const row of rows)
    for (const size of sizes[row]) {
        const { ours, qtextedit, chromium: theirs } = figures[`${row} ${size}`] ?? {};
        const best = Math.min(qtextedit ?? Infinity, theirs ?? Infinity);
        console.log(`${row.padEnd(12)}${String(size).padStart(6)}${cell(ours)}${cell(qtextedit)}${cell(theirs)}${cell(best / ours)}`);
    }


"use strict";

// ---- GIF files, played frame by frame: only so do two of them stay in step, and can be held and stepped

/** Where the sub-blocks that start at a position end. */
function skipSubBlocks(bytes, at) {
    while (bytes[at])
        at += bytes[at] + 1;
    return at + 1;
}

/** The bytes of the sub-blocks that start at a position, joined. */
function joinSubBlocks(bytes, at) {
    const joined = new Uint8Array(skipSubBlocks(bytes, at) - at);
    let size = 0;
    for (; bytes[at]; at += bytes[at] + 1) {
        joined.set(bytes.subarray(at + 1, at + 1 + bytes[at]), size);
        size += bytes[at];
    }
    return joined.subarray(0, size);
}

function parseGif(bytes) {
    const word = at => bytes[at] | bytes[at + 1] << 8;
    const table = (at, flags) => bytes.subarray(at, flags & 0x80 ? at + 3 * (2 << (flags & 7)) : at);
    const plain = {delay: 0, disposal: 0, transparent: -1};
    const gif = {width: word(6), height: word(8), frames: []};
    const shared = table(13, bytes[10]);
    let control = plain;
    for (let at = 13 + shared.length; at < bytes.length && bytes[at] !== 0x3b;) {
        if (bytes[at] === 0x21) {
            if (bytes[at + 1] === 0xf9) {
                const flags = bytes[at + 3];
                const transparent = flags & 1 ? bytes[at + 6] : -1;
                control = {delay: word(at + 4), disposal: flags >> 2 & 7, transparent};
            }
            at = skipSubBlocks(bytes, at + 2);
        } else if (bytes[at] === 0x2c) {
            const flags = bytes[at + 9];
            const own = table(at + 10, flags);
            const data = at + 10 + own.length;
            gif.frames.push({
                left: word(at + 1), top: word(at + 3), width: word(at + 5), height: word(at + 7),
                colours: own.length ? own : shared, interlaced: (flags & 0x40) !== 0, data, ...control,
            });
            control = plain;
            at = skipSubBlocks(bytes, data + 1);
        } else {
            ++at; // zeros between blocks
        }
    }
    return gif;
}

/** The indices of a frame as the file stores them; fewer than wanted when it ends early. */
function decodeLzw(codeSize, data, wanted) {
    const pixels = new Uint8Array(wanted);
    const prefix = new Uint16Array(4096), length = new Uint16Array(4096);
    const first = new Uint8Array(4096), last = new Uint8Array(4096);
    const clear = 1 << codeSize;
    for (let i = 0; i < clear; ++i) {
        first[i] = last[i] = i;
        length[i] = 1;
    }
    let next = clear + 2, width = codeSize + 1, previous = -1;
    let buffer = 0, bits = 0, at = 0, count = 0;
    while (count < wanted) {
        for (; bits < width; bits += 8) {
            if (at === data.length)
                return pixels.subarray(0, count);
            buffer |= data[at++] << bits;
        }
        const code = buffer & (1 << width) - 1;
        buffer >>>= width;
        bits -= width;
        if (code === clear) {
            next = clear + 2;
            width = codeSize + 1;
            previous = -1;
            continue;
        }
        if (code === clear + 1 || code > next || (code === next && previous < 0))
            break;
        if (previous >= 0 && next < 4096) {
            prefix[next] = previous;
            length[next] = length[previous] + 1;
            first[next] = first[previous];
            last[next] = first[code < next ? code : previous];
            if (++next === 1 << width && width < 12)
                ++width;
        }
        for (let to = count + length[code] - 1, part = code; to >= count; --to, part = prefix[part])
            pixels[to] = last[part]; // beyond the end nothing is stored
        count += length[code];
        previous = code;
    }
    return pixels.subarray(0, count);
}

/** The row of the picture that each stored row of an interlaced frame is. */
function interlacedRows(height) {
    const rows = [];
    for (const [start, step] of [[0, 8], [4, 8], [2, 4], [1, 2]]) {
        for (let y = start; y < height; y += step)
            rows.push(y);
    }
    return rows;
}

/** What a viewer shows of a GIF file after each of its frames, on a canvas. */
class Player {
    constructor(bytes, canvas) {
        this.bytes = bytes;
        this.gif = parseGif(bytes);
        canvas.width = this.gif.width;
        canvas.height = this.gif.height;
        this.context = canvas.getContext("2d");
        this.image = this.context.createImageData(canvas.width, canvas.height);
        this.pixels = new Uint32Array(this.image.data.buffer);
        this.shown = -1;
    }

    show(index) {
        if (index < this.shown) {
            this.pixels.fill(0);
            this.shown = -1;
        }
        while (this.shown < index)
            this.advance();
        this.context.putImageData(this.image, 0, 0);
    }

    advance() {
        if (this.shown >= 0)
            this.dispose(this.gif.frames[this.shown]);
        const frame = this.gif.frames[++this.shown];
        this.covered = frame.disposal === 3 || frame.disposal === 4 ? this.pixels.slice() : null;
        this.draw(frame);
    }

    dispose(frame) {
        if (this.covered)
            this.pixels.set(this.covered);
        if (frame.disposal !== 2)
            return;
        for (let y = frame.top; y < frame.top + frame.height; ++y) {
            const start = y * this.gif.width + frame.left;
            this.pixels.fill(0, start, start + frame.width);
        }
    }

    draw(frame) {
        const {colours, width, height} = frame;
        const data = joinSubBlocks(this.bytes, frame.data + 1);
        const indices = decodeLzw(this.bytes[frame.data], data, width * height);
        const rows = frame.interlaced ? interlacedRows(height) : null;
        const opaque = new Uint32Array(256).fill(new Uint32Array(new Uint8Array([0, 0, 0, 255]).buffer)[0]);
        new Uint8Array(opaque.buffer).set(Array.from({length: colours.length / 3 * 4},
            (_, i) => i % 4 === 3 ? 255 : colours[(i >> 2) * 3 + i % 4]));
        for (let i = 0; i < indices.length; ++i) {
            if (indices[i] === frame.transparent)
                continue;
            const row = Math.floor(i / width);
            const y = frame.top + (rows ? rows[row] : row);
            this.pixels[y * this.gif.width + frame.left + i % width] = opaque[indices[i]];
        }
    }
}

// ---- two pictures beside each other

const largest = 1 << 26; // pixels of a canvas: four bytes for each, several times over

const playing = new Set();
let isTicking = false;

/** All that plays is drawn here, both pictures of a pair in one go. */
function tick(now) {
    for (const pair of playing)
        pair.tick(now);
    isTicking = playing.size > 0;
    if (isTicking)
        requestAnimationFrame(tick);
}

function startTicking() {
    if (!isTicking)
        requestAnimationFrame(tick);
    isTicking = true;
}

function bytesOf(element) {
    return Uint8Array.from(atob(element.textContent), character => character.charCodeAt(0));
}

class Pair {
    constructor(file) {
        this.file = file;
        this.place = file.querySelector(".pictures td");
        this.frame = 0;
        this.wantsToPlay = !matchMedia("(prefers-reduced-motion: reduce)").matches;
        this.observer = new IntersectionObserver(entries => this.setVisible(entries.at(-1).isIntersecting));
    }

    /** The first time, with the controls that go with it. */
    open() {
        if (!this.root)
            this.build();
        this.observer.observe(this.root);
    }

    close() {
        this.observer.disconnect();
        this.setVisible(false);
    }

    build() {
        this.place.append(document.getElementById("pair").content.cloneNode(true));
        this.root = this.place.querySelector(".pair");
        const find = selector => this.root.querySelector(selector);
        this.stage = find(".stage");
        this.slider = find(".frame");
        this.play = find(".play");
        this.count = find(".count");
        this.divider = find(".divider");
        this.canvases = [find(".before"), find(".after")];
        const name = this.file.querySelector("bdi").textContent;
        for (const canvas of this.canvases)
            canvas.setAttribute("aria-label", `${name}, ${canvas.className}`);
        for (const radio of this.root.querySelectorAll("[type=radio]")) {
            radio.name = `view-${files.indexOf(this.file)}`;
            radio.addEventListener("change", () => this.setSliding(radio.value === "slide"));
        }
        this.slider.addEventListener("input", () => this.hold(this.slider.valueAsNumber - 1));
        this.play.addEventListener("click", () => this.setPlaying(!this.wantsToPlay));
        this.divider.addEventListener("input", () => this.divide(this.divider.valueAsNumber));
        this.stage.addEventListener("pointermove", event => this.follow(event));
        this.stage.addEventListener("pointerdown", event => this.follow(event));
    }

    setSliding(sliding) {
        this.root.classList.toggle("sliding", sliding);
        this.root.querySelector(".divide").hidden = !sliding;
    }

    divide(percent) {
        this.stage.style.setProperty("--divide", `${percent}%`);
    }

    /** The mouse over the picture, or a finger on it, moves the divider. */
    follow(event) {
        if (!this.root.classList.contains("sliding"))
            return;
        const box = this.stage.getBoundingClientRect();
        this.divider.value = 100 * (event.clientX - box.left) / box.width;
        this.divide(this.divider.valueAsNumber);
    }

    /** Out of sight nothing plays, and only the file's own bytes are kept. */
    setVisible(visible) {
        if (visible && !this.players)
            this.load();
        else if (!visible && this.players)
            this.unload();
    }

    load() {
        const files = ["before", "after"].map(name => bytesOf(this.file.querySelector(`script.${name}`)));
        const gif = parseGif(files[0]);
        if (gif.width * gif.height > largest) {
            this.root.textContent = "These pictures are too large to be shown here.";
            this.close();
            return;
        }
        this.players = files.map((bytes, i) => new Player(bytes, this.canvases[i]));
        const zoom = Math.max(1, Math.floor(320 / Math.max(gif.width, gif.height)));
        for (const canvas of this.canvases) {
            canvas.style.width = `${gif.width * zoom}px`;
            canvas.style.aspectRatio = `${gif.width} / ${gif.height}`;
            canvas.classList.toggle("enlarged", zoom > 1);
        }
        this.frames = Math.min(...this.players.map(player => player.gif.frames.length));
        this.root.querySelector(".time").hidden = this.frames < 2;
        this.slider.max = this.frames;
        this.show(this.frame);
        this.setPlaying(this.wantsToPlay);
    }

    unload() {
        playing.delete(this);
        this.players = null;
        for (const canvas of this.canvases)
            canvas.width = canvas.height = 0;
    }

    setPlaying(wanted) {
        this.wantsToPlay = wanted;
        this.play.textContent = wanted ? "Pause" : "Play";
        this.due = null;
        playing.delete(this);
        if (wanted && this.frames > 1) {
            playing.add(this);
            startTicking();
        }
    }

    hold(frame) {
        this.setPlaying(false);
        this.show(frame);
    }

    show(frame) {
        this.frame = frame;
        for (const player of this.players)
            player.show(frame);
        this.slider.value = frame + 1;
        this.count.textContent = `${frame + 1} of ${this.frames}`;
    }

    tick(now) {
        const time = frame => {
            const delay = this.players[0].gif.frames[frame].delay;
            return 10 * (delay < 2 ? 10 : delay); // as browsers do
        };
        if (this.due === null || now - this.due > 1000) // just started, or the page was out of sight
            this.due = now + time(this.frame);
        let frame = this.frame;
        for (; this.due <= now; this.due += time(frame))
            frame = (frame + 1) % this.frames;
        if (frame !== this.frame)
            this.show(frame);
    }
}

// ---- the table

const table = document.querySelector("table");
const files = [...table.querySelectorAll("tbody")];

function isNumeric(cell) {
    return cell.matches(".number, .part");
}

/** What a file is sorted by: a number, a text, or nothing at all. */
function keyOf(file, column) {
    if (column === 0)
        return file.querySelector("bdi").textContent;
    const cell = file.rows[0].cells[column];
    if (!isNumeric(cell))
        return cell.textContent;
    return cell.dataset.value === undefined ? null : Number(cell.dataset.value);
}

function compare(a, b) {
    return typeof a === "string" ? a.localeCompare(b, undefined, {numeric: true}) : a - b;
}

/** Files that have nothing to be sorted by come last, whichever way. */
function sortBy(header) {
    const column = header.cellIndex;
    const present = header.getAttribute("aria-sort");
    const ascending = present ? present === "descending" : !isNumeric(header);
    for (const other of header.parentNode.cells)
        other.removeAttribute("aria-sort");
    header.setAttribute("aria-sort", ascending ? "ascending" : "descending");
    const keyed = files.map(file => ({file, key: keyOf(file, column)}));
    keyed.sort((a, b) => (a.key === null) - (b.key === null)
        || (a.key === null ? 0 : compare(a.key, b.key) * (ascending ? 1 : -1)));
    table.append(...keyed.map(({file}) => file));
}

for (const header of table.tHead.rows[0].cells) {
    const button = document.createElement("button");
    button.type = "button";
    button.append(...header.childNodes);
    button.addEventListener("click", () => sortBy(header));
    header.append(button);
}

/** A file with pictures: its name becomes a button that shows and hides them. */
function makeEntry(file) {
    const row = file.querySelector(".pictures");
    const pair = new Pair(file);
    const button = document.createElement("button");
    button.type = "button";
    const name = file.querySelector("bdi");
    name.replaceWith(button);
    button.append(name);
    const entry = {
        isOpen: false,
        setOpen(open) {
            entry.isOpen = open;
            row.hidden = !open;
            button.setAttribute("aria-expanded", open);
            if (open)
                pair.open();
            else
                pair.close();
        },
    };
    button.setAttribute("aria-expanded", false);
    button.addEventListener("click", () => {
        entry.setOpen(!entry.isOpen);
        nameAll();
    });
    return entry;
}

const entries = files.filter(file => file.querySelector("script.before")).map(makeEntry);
const all = document.getElementById("all");

function nameAll() {
    all.textContent = entries.every(entry => entry.isOpen) ? "Hide all pictures" : "Show all pictures";
}

function setAll(open) {
    for (const entry of entries)
        entry.setOpen(open);
    nameAll();
}

all.hidden = entries.length === 0;
all.addEventListener("click", () => setAll(!entries.every(entry => entry.isOpen)));
if (entries.length <= 8)
    setAll(true); // few enough to look at without asking

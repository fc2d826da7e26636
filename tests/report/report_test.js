// The page that --report writes, in a real browser: it shows what the browser's own decoder shows, frame by
// frame, sorts, compares, runs no script but its own, and complains about nothing.
//
//     NODE_PATH=... node report_test.js PROGRAM SAMPLES CHROMIUM

"use strict";

const assert = require("node:assert/strict");
const {spawnSync} = require("node:child_process");
const fs = require("node:fs");
const os = require("node:os");
const path = require("node:path");
const {pathToFileURL} = require("node:url");
const {chromium} = require("playwright-core");

const [program, samples, executablePath] = process.argv.slice(2);
const patience = 120000; // ms, for a machine that has much else to do
const faults = []; // that the browser has reported
const strange = '<script>alert(1)<&"\x1b\'.gif';

function makeReport(folder) {
    for (const name of fs.readdirSync(samples).filter(file => file.endsWith(".gif")))
        fs.writeFileSync(path.join(folder, name), fs.readFileSync(path.join(samples, name)));
    fs.renameSync(path.join(folder, "ball.gif"), path.join(folder, strange));
    fs.writeFileSync(path.join(folder, "bad.gif"), "GIF89a");
    const own = path.join(folder, "own");
    const env = {...process.env, XDG_CONFIG_DIRS: own, XDG_CONFIG_HOME: own, XDG_STATE_HOME: own};
    const run = spawnSync(program, ["--report", "report.html", "."], {cwd: folder, env});
    assert.equal(run.status, 1, `the damaged file fails: ${run.stderr}`);
    return pathToFileURL(path.join(folder, "report.html")).href;
}

/** In the page: where one of the two canvases differs from the browser's own idea of a frame. */
async function compareFrames(file) {
    const slider = file.querySelector(".frame");
    const differences = [];
    for (const side of ["before", "after"]) {
        const text = atob(file.querySelector(`script.${side}`).textContent);
        const bytes = Uint8Array.from(text, character => character.charCodeAt(0));
        const decoder = new ImageDecoder({data: bytes, type: "image/gif"});
        await decoder.tracks.ready;
        await decoder.completed;
        const count = decoder.tracks.selectedTrack.frameCount;
        if (count > 1 && count !== Number(slider.max))
            differences.push(`${side} has ${count} frames`);
        const canvas = file.querySelector(`canvas.${side}`);
        const judge = new OffscreenCanvas(canvas.width, canvas.height).getContext("2d");
        for (const i of [...Array(count).keys(), 0]) { // and back to the first
            slider.value = i + 1;
            slider.dispatchEvent(new Event("input"));
            judge.clearRect(0, 0, canvas.width, canvas.height);
            const frame = (await decoder.decode({frameIndex: i})).image;
            judge.drawImage(frame, 0, 0);
            frame.close();
            const wanted = judge.getImageData(0, 0, canvas.width, canvas.height).data;
            const shown = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height).data;
            if (wanted.some((value, at) => value !== shown[at]))
                differences.push(`${side} frame ${i}`);
        }
    }
    return differences;
}

async function open(browser, url, options) {
    const page = await (await browser.newContext(options)).newPage();
    page.setDefaultTimeout(patience);
    page.on("console", message => message.type() === "error" && faults.push(message.text()));
    page.on("pageerror", error => faults.push(String(error)));
    page.on("dialog", dialog => faults.push("a name ran as a script") && dialog.dismiss());
    await page.goto(url);
    return page;
}

async function checkTable(page) {
    const names = () => page.$$eval("tbody bdi", all => all.map(name => name.textContent));
    assert.equal((await names()).length, 7);
    assert.ok((await names()).includes("./" + strange.replace("\x1b", "\\x1b")));
    assert.match(await page.textContent(".failed"), /bad\.gif\s*the file ends too early \(code 18\)/);
    assert.match(await page.textContent(".facts"), /7 files: 6 made smaller, 1 failed/);
    for (const direction of ["descending", "ascending"]) {
        await page.click("th button:text('Saved')");
        assert.equal(await page.getAttribute("th:has(button:text-is('Saved'))", "aria-sort"), direction);
        const saved = await page.$$eval("tbody", all => all.map(file => file.rows[0].cells[3].dataset.value));
        assert.equal(saved.pop(), undefined, "what has no number comes last");
        const sorted = saved.map(Number).sort((a, b) => direction === "ascending" ? a - b : b - a);
        assert.deepEqual(saved.map(Number), sorted);
    }
    await page.click("th button:text('File')");
    assert.deepEqual((await names()).slice(-2), ["./terminal.gif", "./tiles.gif"]);
}

async function checkPictures(page) {
    const files = page.locator("tbody:has(script.before)");
    assert.equal(await files.count(), 6);
    for (const file of await files.all()) {
        const stage = file.locator(".stage");
        await stage.scrollIntoViewIfNeeded();
        await file.locator("canvas.after:not([width='0'])").waitFor();
        assert.deepEqual(await file.evaluate(compareFrames), [], await file.locator("bdi").textContent());

        await file.locator("[value=slide]").check();
        const divider = file.locator(".divider");
        await divider.focus();
        await page.keyboard.press("ArrowRight");
        assert.equal(await file.locator("canvas.after").evaluate(canvas => getComputedStyle(canvas).clipPath),
            "inset(0px 0px 0px 51%)");
        const name = file.locator("th button");
        await name.focus();
        await page.keyboard.press("Enter");
        assert.equal(await name.getAttribute("aria-expanded"), "false");
        assert.ok(await stage.isHidden());
    }
}

async function checkPlaying(page) {
    const file = page.locator("tbody:has-text('spinner.gif')");
    await file.locator(".stage").scrollIntoViewIfNeeded();
    for (const frame of [2, 3, 1]) // the last: it starts again
        await file.locator(`.count:text('${frame} of')`).waitFor();
    await file.locator(".play:text('Pause')").click();
    await file.locator(".play:text('Play')").waitFor();
}

async function main() {
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), "parvigif-test-"));
    const args = process.getuid() === 0 ? ["--no-sandbox"] : []; // chromium refuses root otherwise
    const browser = await chromium.launch({executablePath, timeout: patience, args});
    try {
        const url = makeReport(folder);
        const page = await open(browser, url);
        await checkTable(page);
        await checkPlaying(page);
        await checkPictures(page);

        const phone = {viewport: {width: 360, height: 640}, colorScheme: "dark", reducedMotion: "reduce"};
        const small = await open(browser, url, phone);
        await small.locator("tbody:has-text('spinner.gif') .stage").scrollIntoViewIfNeeded();
        await small.locator("tbody:has-text('spinner.gif') .play:text('Play')").waitFor();
        const width = await small.evaluate(() => document.documentElement.scrollWidth);
        assert.equal(width, 360, "nothing sticks out");
        assert.deepEqual(faults, []);
    } finally {
        await browser.close();
        fs.rmSync(folder, {recursive: true});
    }
}

main().catch(error => {
    console.error(error);
    process.exitCode = 1;
});

// The report dialog in a real headless browser: `zpreport generate --interactive` serves the
// page; a user unticks a section, renames another (with markup in the name), gives the
// designer's name, picks two of three images, generates and downloads. The document read back
// reflects each choice; requests without the token, from a foreign origin or too large are
// refused, and the markup is shown as text.
//
//   node dialog.test.mjs BUILD_DIR SOURCE_DIR
import { spawn, execFileSync } from 'node:child_process';
import { mkdtempSync, cpSync, rmSync, readFileSync, writeFileSync, existsSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { chromium } from 'playwright-core';

const [build, source] = process.argv.slice(2);
let failures = 0;
const check = (ok, what) => { if (!ok) { failures++; console.error('FAILED: ' + what); } else console.log('ok: ' + what); };

const browserPath = ['/usr/bin/chromium', '/usr/bin/chromium-browser'].find((p) => existsSync(p));
if (!browserPath) { console.log('SKIPPED: no chromium on this machine'); process.exit(0); }

const work = mkdtempSync(join(tmpdir(), 'zp-browser-'));
const out = join(work, 'out'), data = join(work, 'data');
cpSync(join(source, 'examples/bracket'), join(work, 'study'), { recursive: true });
const study = JSON.parse(readFileSync(join(work, 'study/study.json'), 'utf8'));
delete study.report.userSection;
study.images.splice(3, 1);  // three images
writeFileSync(join(work, 'study/study.json'), JSON.stringify(study));

const program = spawn(join(build, 'zpreport'),
  ['generate', join(work, 'study/study.json'), '--out', out, '--interactive'],
  { env: { ...process.env, XDG_DATA_HOME: data }, stdio: ['ignore', 'pipe', 'pipe'] });
let errors = '';
const url = await new Promise((resolve, reject) => {
  program.stderr.on('data', (chunk) => {
    errors += chunk;
    const m = errors.match(/(http:\/\/127\.0\.0\.1:\d+\/\?token=[0-9a-f]+)/);
    if (m) resolve(m[1]);
  });
  program.on('exit', (code) => reject(new Error('the program ended with ' + code + ': ' + errors)));
  setTimeout(() => reject(new Error('no address printed: ' + errors)), 20000);
});
const base = url.slice(0, url.indexOf('/?'));
const token = url.slice(url.indexOf('token=') + 6);
const exited = new Promise((resolve) => program.on('exit', (code) => resolve(code)));

let browser, page;
try {
  // Refusals.
  check((await fetch(base + '/api/state')).status === 403, 'a request without the token is refused');
  check((await fetch(base + '/api/state?token=' + '0'.repeat(32))).status === 403, 'a wrong token is refused');
  check((await fetch(base + '/api/step?token=' + token, { method: 'POST', body: '{}',
    headers: { Origin: 'http://evil.example' } })).status === 403, 'a foreign origin is refused');
  check((await fetch(base + '/api/step?token=' + token, { method: 'POST', body: 'x'.repeat(100000) })).status === 413,
    'an oversized body is refused');
  const state = await (await fetch(base + '/api/state?token=' + token)).json();
  check(state.dialog && state.dialog.dialog === 13028, 'the report dialog is open');

  browser = await chromium.launch({ executablePath: browserPath, args: ['--no-sandbox'] });
  page = await browser.newPage({ acceptDownloads: true });
  await page.goto(url);
  const grid = page.locator('[data-control="12110"]');
  await grid.locator('tr[data-row="3"] input').waitFor();
  // The settled page after each action: no step in flight.
  const settle = async () => { await page.waitForTimeout(300); await page.waitForFunction(async () =>
    !(await (await fetch('/api/state', { headers: { 'X-Zp-Token': new URLSearchParams(location.search).get('token') } })).json()).busy); };

  await grid.locator('tr[data-row="3"] input').uncheck();  // study properties
  await settle();
  await grid.locator('tr[data-row="2"] td').nth(1).click();  // model information
  await settle();
  const title = page.locator('[data-control="14267"] input');
  await title.fill('Bodies <b>of</b> the bracket');
  await title.press('Tab');
  await settle();
  check(await page.locator('#controls b').count() === 0, 'markup in a title is not made into an element');
  check((await grid.textContent()).includes('Bodies <b>of</b> the bracket'), 'the grid shows the title as text');
  await page.locator('[data-control="14281"] input').check();
  await settle();
  const designer = page.locator('[data-control="14282"] input');
  await designer.fill('A. Designer');
  await designer.press('Tab');
  await settle();
  const name = page.locator('[data-control="12109"] input');
  await name.fill('FromBrowser');
  await name.press('Tab');
  await settle();
  // Choosing the images opens their dialog: the second of three unticked, then OK.
  await page.locator('[data-control="14340"] input').check();
  const images = page.locator('[data-control="12118"]');
  await images.locator('tr[data-row="1"] input').waitFor({ timeout: 20000 });
  await images.locator('tr[data-row="1"] input').uncheck();
  await settle();
  await page.locator('[data-control="12087"] button').click();
  await page.locator('[data-control="12016"] button').waitFor({ timeout: 20000 });
  await settle();
  await page.locator('[data-control="12016"] button').click();
  // The run, then the download.
  await page.locator('#download:not([hidden])').waitFor({ timeout: 30000 });
  const [download] = await Promise.all([page.waitForEvent('download'), page.locator('#download').click()]);
  const saved = join(work, download.suggestedFilename());
  await download.saveAs(saved);
  if (process.env.ZP_KEEP_DOCUMENTS) cpSync(saved, join(process.env.ZP_KEEP_DOCUMENTS, 'Browser.ReportDialog.docx'));
  check(download.suggestedFilename() === 'FromBrowser.docx', 'the document has the file name typed');
  const body = execFileSync('unzip', ['-p', saved, 'word/document.xml']).toString();
  const text = body.replace(/<[^>]+>/g, '');
  check(text.includes('Bodies &lt;b&gt;of&lt;/b&gt; the bracket'), 'the new title stands in the document, as text');
  check(!text.includes('Default solver settings; thermal loads are on'), 'the unticked section is gone');
  check(text.includes('A. Designer'), "the designer's name is on the cover");
  check(text.includes('The cap sheet carries no load') && text.includes('the cap deflects by 0.142 mm'),
    'the two images picked are in');
  check(!text.includes('von Mises stress under the 1,500 N service load'), 'the image left out is not');
  const code = await Promise.race([exited, new Promise((r) => setTimeout(() => r('still running'), 15000))]);
  check(code === 0, 'the program ends with 0 once the document is fetched (' + code + ')');
} catch (e) {
  failures++;
  console.error('FAILED: ' + (e.stack || e) + '\n' + errors);
  if (page && process.env.ZP_BROWSER_SHOT) await page.screenshot({ path: process.env.ZP_BROWSER_SHOT, fullPage: true });
} finally {
  if (browser) await browser.close();
  program.kill('SIGKILL');
  rmSync(work, { recursive: true, force: true });
}
process.exit(failures ? 1 : 0);

// The tuning page in Debian's Chromium, headless, driven by puppeteer-core:
// drag a slider, see the module store it, switch tabs, see a refusal, flush,
// reload, see the value kept, and see a scheme switch arrive by polling.
'use strict';
const test = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const puppeteer = require('puppeteer-core');
const { startSensord, DigestClient, USER, PASSWORD, OUT } = require('./sensord');

const CHROMIUM = process.env.CHROMIUM || '/usr/bin/chromium';

test('the tuning page applies what a person drags and keeps it', async (t) => {
  const server = await startSensord('ipc');
  const browser = await puppeteer.launch({ executablePath: CHROMIUM, headless: true,
    args: ['--no-sandbox', '--disable-gpu', '--no-proxy-server'] });
  t.after(async () => { await browser.close(); await server.stop(); });
  const api = new DigestClient(server.base);
  const page = await browser.newPage();
  await page.authenticate({ username: USER, password: PASSWORD });
  await page.setViewport({ width: 1000, height: 400 });
  await page.goto(server.base + '/', { waitUntil: 'networkidle0' });

  await page.click('#tab-image');
  const slider = await page.waitForSelector('#ctl-34');
  const box = await slider.boundingBox();
  await page.mouse.move(box.x + box.width * 0.5, box.y + box.height / 2);
  await page.mouse.down();
  await page.mouse.move(box.x + box.width * 0.8, box.y + box.height / 2, { steps: 8 });
  await page.mouse.up();
  const dragged = Number(await slider.evaluate((e) => e.value));
  assert.ok(dragged > 70 && dragged <= 85, `slider at ${dragged}`);
  await page.waitForFunction((v) => document.getElementById('val-34').textContent === String(v), {}, dragged);
  assert.equal((await api.json('GET', '/api/v1/channels/1/parameters/34')).body.value, dragged);

  // A value the ISP corrects or the style refuses shows why.
  await page.select('#ctl-2528', '3');
  await page.waitForFunction(() => document.getElementById('val-2528').textContent === '3');
  const refused = await api.json('PUT', '/api/v1/channels/1/parameters/2528', { value: 7 });
  assert.equal(refused.status, 422);
  assert.match(refused.body.error, /not one of 0 1 2 3/);

  await page.click('#tab-exposure');
  await page.waitForSelector('#ctl-16');
  assert.equal(await page.$('#ctl-34'), null, 'only the chosen tab is shown');
  await page.click('#flush');
  await page.waitForFunction(() => document.getElementById('notice').textContent === 'stored on flash');
  await page.reload({ waitUntil: 'networkidle0' });
  await page.click('#tab-image');
  assert.equal(await page.$eval('#ctl-34', (e) => Number(e.value)), dragged);

  // A switch made elsewhere (as the sensor thread makes them) shows by polling.
  assert.equal((await api.json('POST', '/api/v1/channels/1/scheme', { scheme: 1 })).status, 200);
  await page.waitForFunction(() => document.getElementById('status').textContent.startsWith('scheme 1'),
    { timeout: 5000 });
  assert.equal(await page.$eval('#ctl-34', (e) => Number(e.value)), 50, 'scheme 1 has its own brightness');
  await api.json('POST', '/api/v1/channels/1/scheme', { scheme: 0 });
  await page.waitForFunction((v) => document.getElementById('ctl-34').value === String(v), { timeout: 5000 }, dragged);

  fs.mkdirSync(OUT, { recursive: true });
  await page.screenshot({ path: path.join(OUT, 'page.png') });
  t.diagnostic('screenshot: ' + path.join(OUT, 'page.png'));
});

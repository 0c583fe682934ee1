// The tuning page in Debian's Chromium, headless, driven by puppeteer-core:
// drag a slider, see the module store it, switch tabs, see a refusal, flush,
// reload, see the value kept, and see a scheme switch arrive by polling.
'use strict';
const test = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const puppeteer = require('puppeteer-core');
const { startSensord, digestClient, USER, PASSWORD, OUT } = require('./sensord');

test('the tuning page applies what a person drags and keeps it', async (t) => {
  const server = await startSensord('ipc');
  const browser = await puppeteer.launch({ executablePath: process.env.CHROMIUM || '/usr/bin/chromium',
    headless: true, args: ['--no-sandbox', '--disable-gpu', '--no-proxy-server'] });
  t.after(async () => { await browser.close(); await server.stop(); });
  const api = digestClient(server.base);
  const page = await browser.newPage();
  // Waits until the element's text (or a control's value) is this text.
  const shows = (id, text, field = 'textContent') => page.waitForFunction((i, f, v) =>
    document.getElementById(i)?.[f] === v, { timeout: 5000 }, id, field, String(text));
  const brightness = () => page.$eval('#ctl-34', (e) => Number(e.value));
  await page.authenticate({ username: USER, password: PASSWORD });
  await page.setViewport({ width: 1000, height: 400 });
  await page.goto(server.base + '/', { waitUntil: 'networkidle0' });

  await page.click('#tab-image');
  const box = await (await page.waitForSelector('#ctl-34')).boundingBox();
  await page.mouse.move(box.x + box.width * 0.5, box.y + box.height / 2);
  await page.mouse.down();
  await page.mouse.move(box.x + box.width * 0.8, box.y + box.height / 2, { steps: 8 });
  await page.mouse.up();
  const dragged = await brightness();
  assert.ok(dragged > 70 && dragged <= 85, `slider at ${dragged}`);
  await shows('val-34', dragged);
  assert.equal((await api.json('GET', '/api/v1/channels/1/parameters/34')).body.value, dragged);
  // A value the ISP corrects or the style refuses shows why.
  await page.select('#ctl-2528', '3');
  await shows('val-2528', 3);
  const refused = await api.json('PUT', '/api/v1/channels/1/parameters/2528', { value: 7 });
  assert.equal(refused.status, 422);
  assert.match(refused.body.error, /not one of 0 1 2 3/);

  await page.click('#tab-exposure');
  await page.waitForSelector('#ctl-16');
  assert.equal(await page.$('#ctl-34'), null, 'only the chosen tab is shown');
  await page.click('#flush');
  await shows('notice', 'stored on flash');
  await page.reload({ waitUntil: 'networkidle0' });
  await page.click('#tab-image');
  assert.equal(await brightness(), dragged);
  // A switch made elsewhere (as the sensor thread makes them) shows by polling.
  assert.equal((await api.json('POST', '/api/v1/channels/1/scheme', { scheme: 1 })).status, 200);
  await page.waitForFunction(() => document.getElementById('status').textContent.startsWith('scheme 1'),
    { timeout: 5000 });
  assert.equal(await brightness(), 50, 'scheme 1 has its own brightness');
  await api.json('POST', '/api/v1/channels/1/scheme', { scheme: 0 });
  await shows('ctl-34', dragged, 'value');
  fs.mkdirSync(OUT, { recursive: true });
  await page.screenshot({ path: path.join(OUT, 'page.png') });
  t.diagnostic('screenshot: ' + path.join(OUT, 'page.png'));
});

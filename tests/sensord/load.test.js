// 8 clients on loopback, 500 mixed requests each (reads and writes through
// the JSON API, ONVIF reads and writes): no error, and the 99th percentile
// of the latencies reported (in the test's output and out/load.txt).
'use strict';
const test = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { startSensord, DigestClient, soap, imaging, OUT } = require('./sensord');

const CLIENTS = 8;
const REQUESTS = 500;

async function runClient(base, index, latencies) {
  const client = new DigestClient(base);
  const key = [34, 2337, 2353, 2321][index % 4];
  for (let i = 0; i < REQUESTS; i++) {
    const started = process.hrtime.bigint();
    let ok;
    switch (i % 5) {
    case 0: ok = (await client.json('PUT', `/api/v1/channels/1/parameters/${key}`, { value: (i + index) % 101 })).status === 200; break;
    case 1: ok = (await client.json('GET', `/api/v1/channels/1/parameters/${key}`)).status === 200; break;
    case 2: ok = (await client.json('GET', '/api/v1/channels')).status === 200; break;
    case 3: ok = /<tt:Brightness>/.test((await client.request('POST', '/onvif/imaging_service',
      soap(imaging('GetImagingSettings')))).body); break;
    default: ok = (await client.request('POST', '/onvif/imaging_service', soap(imaging('SetImagingSettings',
      `<ImagingSettings><Sharpness>${i % 101}</Sharpness></ImagingSettings><ForcePersistence>false</ForcePersistence>`))))
      .status === 200;
    }
    assert.ok(ok, `client ${index}, request ${i}`);
    latencies.push(Number(process.hrtime.bigint() - started) / 1e6);
  }
}

test(`${CLIENTS} clients x ${REQUESTS} mixed requests`, async (t) => {
  const server = await startSensord('ipc');
  t.after(() => server.stop());
  const latencies = [];
  const started = Date.now();
  await Promise.all(Array.from({ length: CLIENTS }, (_, i) => runClient(server.base, i, latencies)));
  const seconds = (Date.now() - started) / 1000;
  assert.equal(latencies.length, CLIENTS * REQUESTS);
  latencies.sort((a, b) => a - b);
  const at = (q) => latencies[Math.min(latencies.length - 1, Math.floor(q * latencies.length))].toFixed(2);
  const report = `${latencies.length} requests from ${CLIENTS} clients in ${seconds.toFixed(1)} s, ` +
    `no error; latency ms: p50 ${at(0.5)}, p99 ${at(0.99)}, max ${at(1)}\n`;
  fs.mkdirSync(OUT, { recursive: true });
  fs.writeFileSync(path.join(OUT, 'load.txt'), report);
  t.diagnostic(report.trim());
});

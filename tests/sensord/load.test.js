// 8 clients on loopback, 500 mixed requests each (JSON API and ONVIF reads and writes): no
// error; the latency percentiles are reported in the test's output and out/load.txt.
'use strict';
const test = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { startSensord, digestClient, soap, imaging, OUT } = require('./sensord');

const [CLIENTS, REQUESTS] = [8, 500];
const onvif = (c, op, inner) => c.request('POST', '/onvif/imaging_service', soap(imaging(op, inner)));
const ok = async (reply) => (await reply).status === 200;
// Request i of a client with its key and a value: whether the answer was right.
const MIX = [
  (c, key, value) => ok(c.json('PUT', `/api/v1/channels/1/parameters/${key}`, { value })),
  (c, key) => ok(c.json('GET', `/api/v1/channels/1/parameters/${key}`)),
  (c) => ok(c.json('GET', '/api/v1/channels')),
  async (c) => /<tt:Brightness>/.test((await onvif(c, 'GetImagingSettings')).body),
  (c, key, value) => ok(onvif(c, 'SetImagingSettings',
    `<ImagingSettings><Sharpness>${value}</Sharpness></ImagingSettings><ForcePersistence>false</ForcePersistence>`)),
];

test(`${CLIENTS} clients x ${REQUESTS} mixed requests`, async (t) => {
  const server = await startSensord('ipc');
  t.after(() => server.stop());
  const latencies = [];
  const started = Date.now();
  await Promise.all(Array.from({ length: CLIENTS }, async (_, n) => {
    const client = digestClient(server.base);
    for (let i = 0; i < REQUESTS; i++) {
      const sent = process.hrtime.bigint();
      assert.ok(await MIX[i % 5](client, [34, 2337, 2353, 2321][n % 4], (i + n) % 101), `client ${n}, request ${i}`);
      latencies.push(Number(process.hrtime.bigint() - sent) / 1e6);
    }
  }));
  latencies.sort((a, b) => a - b);
  const at = (q) => latencies[Math.min(latencies.length - 1, Math.floor(q * latencies.length))].toFixed(2);
  const report = `${latencies.length} requests from ${CLIENTS} clients in ${((Date.now() - started) / 1000).toFixed(1)} s, ` +
    `no error; latency ms: p50 ${at(0.5)}, p99 ${at(0.99)}, max ${at(1)}\n`;
  fs.mkdirSync(OUT, { recursive: true });
  fs.writeFileSync(path.join(OUT, 'load.txt'), report);
  t.diagnostic(report.trim());
});

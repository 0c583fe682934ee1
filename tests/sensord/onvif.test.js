// sensord as a third-party ONVIF client (the npm package onvif) sees it, and
// the protocol's edges that client does not reach: replays, stale tokens,
// faults that leave everything as it was, oversized and malformed requests.
'use strict';
const test = require('node:test');
const assert = require('node:assert/strict');
const { promisify } = require('node:util');
const { Cam } = require('onvif');
const { startSensord, DigestClient, rawRequest, soap, usernameToken, imaging, USER, PASSWORD } = require('./sensord');

const connect = (port, password) => new Promise((resolve, reject) => {
  const cam = new Cam({ hostname: '127.0.0.1', port, username: USER, password, timeout: 10000 },
    (err) => (err ? reject(err) : resolve(cam)));
});
const call = (cam, name, ...args) => promisify(cam[name]).apply(cam, args);

test('an ONVIF client we did not write tunes the dome camera', async (t) => {
  const server = await startSensord('dome');
  t.after(() => server.stop());
  const cam = await connect(server.port, PASSWORD);
  assert.equal(cam.activeSource.sourceToken, 'VideoSource_1');

  const before = await call(cam, 'getImagingSettings');
  assert.equal(before.brightness, 50);
  const wanted = { brightness: 61, contrast: 42, colorSaturation: 73, sharpness: 34 };
  await call(cam, 'setImagingSettings', wanted);
  const after = await call(cam, 'getImagingSettings');
  for (const [field, value] of Object.entries(wanted)) assert.equal(after[field], value, field);

  // Out of range: a fault, and the valid value beside it is not applied either.
  await assert.rejects(call(cam, 'setImagingSettings', { brightness: 20, contrast: 101 }), /outside 0 to 100/);
  assert.equal((await call(cam, 'getImagingSettings')).brightness, 61);

  const options = await call(cam, 'getVideoSourceOptions');
  assert.deepEqual([options.brightness.min, options.brightness.max], [0, 100]);

  await call(cam, 'setCurrentImagingPreset', { presetToken: 'Scheme_2' });
  assert.equal((await call(cam, 'getCurrentImagingPreset')).$.token, 'Scheme_2');
  assert.equal((await call(cam, 'getImagingSettings')).brightness, 50, 'scheme 2 keeps its own values');
  await call(cam, 'setCurrentImagingPreset', { presetToken: 'Scheme_0' });
  assert.equal((await call(cam, 'getImagingSettings')).brightness, 61);
  await assert.rejects(call(cam, 'setCurrentImagingPreset', { presetToken: 'Scheme_9' }), /no preset/);

  const move = await call(cam, 'imagingGetMoveOptions');
  assert.deepEqual([move.absolute.position.min, move.absolute.position.max], [0, 65535]);
  await call(cam, 'imagingMove', { absolute: { position: 3210 } });
  assert.deepEqual((await call(cam, 'imagingGetStatus')).focusStatus20,
    { position: 3210, moveStatus: 'IDLE' });
  await call(cam, 'imagingMove', { continuous: { speed: 0.5 } });
  assert.equal((await call(cam, 'imagingGetStatus')).focusStatus20.moveStatus, 'MOVING');
  await call(cam, 'imagingStop', {});
  assert.equal((await call(cam, 'imagingGetStatus')).focusStatus20.moveStatus, 'IDLE');
  await assert.rejects(call(cam, 'imagingMove', { absolute: { position: 70000 } }), /outside/);

  await assert.rejects(connect(server.port, 'wrong password'));
});

test('tokens, replays and bad requests are refused without changing anything', async (t) => {
  const server = await startSensord('ipc');
  t.after(() => server.stop());
  const post = (body, service = 'imaging_service') =>
    rawRequest(server.base, 'POST', '/onvif/' + service, body, { 'Content-Type': 'application/soap+xml' });
  const setBrightness = (v, token) => post(soap(imaging('SetImagingSettings',
    `<ImagingSettings><Brightness xmlns="http://www.onvif.org/ver10/schema">${v}</Brightness></ImagingSettings>`), token));
  const brightness = async () => /<tt:Brightness>(\d+)</.exec((await post(soap(imaging('GetImagingSettings')))).body)[1];

  const client = new DigestClient(server.base);
  const signed = (body) => client.request('POST', '/onvif/imaging_service', body);
  const token = usernameToken();
  assert.equal((await setBrightness(55, token)).status, 200);
  const cases = [
    ['replayed token', await setBrightness(66, token), 400, /NotAuthorized/],
    ['stale token', await setBrightness(66, usernameToken(new Date(Date.now() - 600e3))), 400, /NotAuthorized/],
    ['wrong password', await setBrightness(66, usernameToken(new Date(), 'nope')), 400, /NotAuthorized/],
    ['no credentials', await setBrightness(66, null), 401, /NotAuthorized/],
    ['a field the ipc lacks', await post(soap(imaging('SetImagingSettings',
      '<ImagingSettings><Brightness>66</Brightness><Focus><AutoFocusMode>AUTO</AutoFocusMode></Focus></ImagingSettings>'))),
    400, /InvalidArgVal[\s\S]*Focus\/AutoFocusMode/],
    ['focus move without a lens', await post(soap(imaging('Move', '<Focus><Relative><Distance>2</Distance></Relative></Focus>'))),
      400, /InvalidArgVal/],
    ['unknown operation', await post(soap('<Reboot xmlns="http://www.onvif.org/ver10/device/wsdl"/>'), 'device_service'),
      500, /ActionNotSupported/],
    ['malformed XML', await signed(soap(imaging('GetStatus'), null).slice(0, -20)), 400, /WellFormed/],
    ['too deep', await signed(soap('<a>'.repeat(60) + '</a>'.repeat(60), null)), 400, /deeper than 48/],
    ['malformed XML unsigned', await post(soap(imaging('GetStatus')).slice(0, -20)), 401, /NotAuthorized/],
    ['over 64 KB', await post(soap(imaging('GetStatus', ' '.repeat(70000)))), 413, /larger than 64 KB/],
  ];
  for (const [what, reply, status, fault] of cases) {
    assert.equal(reply.status, status, what);
    assert.match(reply.body, fault, what);
  }
  assert.equal(await brightness(), '55');
  const open = await post(soap('<GetSystemDateAndTime xmlns="http://www.onvif.org/ver10/device/wsdl"/>', null), 'device_service');
  assert.match(open.body, /<tt:UTCDateTime>/);
});

// sensord as a third-party ONVIF client (the npm package onvif) sees it, and the protocol's edges
// that client does not reach: replays, stale tokens, faults that change nothing, bad requests.
'use strict';
const test = require('node:test');
const assert = require('node:assert/strict');
const { promisify } = require('node:util');
const { Cam } = require('onvif');
const { startSensord, digestClient, rawRequest, soap, usernameToken, imaging, USER, PASSWORD } = require('./sensord');

const connect = (port, password) => new Promise((resolve, reject) => {
  const cam = new Cam({ hostname: '127.0.0.1', port, username: USER, password, timeout: 10000 },
    (err) => (err ? reject(err) : resolve(cam)));
});

test('an ONVIF client we did not write tunes the dome camera', async (t) => {
  const server = await startSensord('dome');
  t.after(() => server.stop());
  const cam = await connect(server.port, PASSWORD);
  const call = (name, ...args) => promisify(cam[name]).apply(cam, args);
  const brightness = async () => (await call('getImagingSettings')).brightness;
  assert.equal(cam.activeSource.sourceToken, 'VideoSource_1');
  assert.equal(await brightness(), 50);
  const wanted = { brightness: 61, contrast: 42, colorSaturation: 73, sharpness: 34 };
  await call('setImagingSettings', wanted);
  // Out of range: a fault, and the valid value beside it is not applied either.
  await assert.rejects(call('setImagingSettings', { brightness: 20, contrast: 101 }), /outside 0 to 100/);
  const after = await call('getImagingSettings');
  for (const [field, value] of Object.entries(wanted)) assert.equal(after[field], value, field);
  const options = await call('getVideoSourceOptions');
  assert.deepEqual([options.brightness.min, options.brightness.max], [0, 100]);
  // Scheme 2 keeps its own values.
  for (const [presetToken, value] of [['Scheme_2', 50], ['Scheme_0', 61]]) {
    await call('setCurrentImagingPreset', { presetToken });
    assert.equal((await call('getCurrentImagingPreset')).$.token, presetToken);
    assert.equal(await brightness(), value, presetToken);
  }
  await assert.rejects(call('setCurrentImagingPreset', { presetToken: 'Scheme_9' }), /no preset/);

  const move = await call('imagingGetMoveOptions');
  assert.deepEqual([move.absolute.position.min, move.absolute.position.max], [0, 65535]);
  for (const [op, args, status] of [['imagingMove', { absolute: { position: 3210 } }, { position: 3210, moveStatus: 'IDLE' }],
    ['imagingMove', { continuous: { speed: 0.5 } }, { moveStatus: 'MOVING' }], ['imagingStop', {}, { moveStatus: 'IDLE' }]]) {
    await call(op, args);
    const focus = (await call('imagingGetStatus')).focusStatus20;
    assert.deepEqual({ position: focus.position, ...status }, focus, JSON.stringify(args));
  }
  await assert.rejects(call('imagingMove', { absolute: { position: 70000 } }), /outside/);
  await assert.rejects(connect(server.port, 'wrong password'));
});

test('tokens, replays and bad requests are refused without changing anything', async (t) => {
  const server = await startSensord('ipc');
  t.after(() => server.stop());
  const post = (body, service = 'imaging_service') =>
    rawRequest(server.base, 'POST', '/onvif/' + service, body, { 'Content-Type': 'application/soap+xml' });
  const set = (inner, token) => post(soap(imaging('SetImagingSettings', `<ImagingSettings>${inner}</ImagingSettings>`), token));
  const brightness = (v) => `<Brightness xmlns="http://www.onvif.org/ver10/schema">${v}</Brightness>`;
  const signed = (body) => digestClient(server.base).request('POST', '/onvif/imaging_service', body);
  const token = usernameToken();
  assert.equal((await set(brightness(55), token)).status, 200);
  const cases = [
    ['replayed token', await set(brightness(66), token), 400, /NotAuthorized/],
    ['stale token', await set(brightness(66), usernameToken(new Date(Date.now() - 600e3))), 400, /NotAuthorized/],
    ['wrong password', await set(brightness(66), usernameToken(new Date(), 'nope')), 400, /NotAuthorized/],
    ['no credentials', await set(brightness(66), null), 401, /NotAuthorized/],
    ['a field the ipc lacks', await set(brightness(66) + '<Focus><AutoFocusMode>AUTO</AutoFocusMode></Focus>'),
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
  assert.match((await post(soap(imaging('GetImagingSettings')))).body, /<tt:Brightness>55</);
  const open = await post(soap('<GetSystemDateAndTime xmlns="http://www.onvif.org/ver10/device/wsdl"/>', null), 'device_service');
  assert.match(open.body, /<tt:UTCDateTime>/);
});

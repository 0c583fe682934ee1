// Shared by the sensord tests: start the built sensord on a fresh copy of a sample device
// (loopback, a free port), sign requests with HTTP Digest or a WS-Security UsernameToken.
'use strict';
const { spawn } = require('node:child_process');
const crypto = require('node:crypto');
const fs = require('node:fs');
const http = require('node:http');
const os = require('node:os');
const path = require('node:path');

const SENSORD = process.env.SENSORD || path.join(__dirname, '../../build/debug/tools/sensord');
// Screenshots and the load report; CTest puts them in the build tree.
const OUT = process.env.SENSORD_TEST_OUT || path.join(__dirname, '../../build/sensord-test-out');
const USER = 'admin';
const PASSWORD = 'tune-me-1';

async function startSensord(device) {
  const dir = fs.mkdtempSync(path.join(os.tmpdir(), 'sensord-test-'));
  fs.writeFileSync(path.join(dir, 'password'), PASSWORD + '\n');
  const child = spawn(SENSORD, ['--device', device, '--root', path.join(dir, 'root'), '--listen',
    '127.0.0.1:0', '--user', USER, '--password-file', path.join(dir, 'password')],
  { stdio: ['ignore', 'pipe', 'inherit'] });
  let output = '';
  const port = await new Promise((resolve, reject) => {
    const timer = setTimeout(() => reject(new Error('sensord did not listen within 5 s')), 5000);
    child.stdout.on('data', (chunk) => {
      const found = /listening on http:\/\/127\.0\.0\.1:(\d+)/.exec(output += chunk);
      if (found) { clearTimeout(timer); resolve(Number(found[1])); }
    });
    child.on('exit', (code) => reject(new Error('sensord ended early: ' + code)));
  });
  child.stdout.resume();
  // SIGTERM must end it cleanly: exit status 0, no sanitizer report.
  const stop = () => new Promise((resolve, reject) => {
    child.removeAllListeners('exit');
    child.on('exit', (code, signal) => {
      fs.rmSync(dir, { recursive: true, force: true });
      if (code === 0) resolve(); else reject(new Error(`sensord ended with ${code ?? signal}`));
    });
    child.kill('SIGTERM');
  });
  return { port, stop, base: `http://127.0.0.1:${port}` };
}

const rawRequest = (base, method, uri, body, headers = {}, agent = undefined) => new Promise((resolve, reject) => {
  const req = http.request(base + uri, { method, headers, agent, timeout: 10000 }, async (res) => {
    let text = '';
    for await (const chunk of res.setEncoding('utf8')) text += chunk;
    resolve({ status: res.statusCode, headers: res.headers, body: text });
  });
  req.on('timeout', () => req.destroy(new Error('timed out'))).on('error', reject).end(body);
});

const md5 = (text) => crypto.createHash('md5').update(text).digest('hex');
// One client's HTTP Digest state: the server's nonce is kept and reused with a rising count,
// as browsers do.
function digestClient(base) {
  const agent = new http.Agent({ keepAlive: true, maxSockets: 1 });
  let [nonce, nc] = [null, 0];
  const sign = (method, uri) => {
    const count = (++nc).toString(16).padStart(8, '0');
    const cnonce = crypto.randomBytes(8).toString('hex');
    const ha1 = md5(`${USER}:sensord:${PASSWORD}`);
    const response = md5(`${ha1}:${nonce}:${count}:${cnonce}:auth:${md5(`${method}:${uri}`)}`);
    return `Digest username="${USER}", realm="sensord", nonce="${nonce}", uri="${uri}", qop=auth, ` +
      `nc=${count}, cnonce="${cnonce}", response="${response}", algorithm=MD5`;
  };
  const request = async (method, uri, body, headers = {}) => {
    for (let attempt = 0; attempt < 2; attempt++) {
      const signed = nonce ? { ...headers, Authorization: sign(method, uri) } : headers;
      const reply = await rawRequest(base, method, uri, body, signed, agent);
      const challenge = reply.headers['www-authenticate'];
      if (reply.status !== 401 || !challenge) return reply;
      nonce = /nonce="([^"]+)"/.exec(challenge)[1];
    }
    throw new Error('not signed in');
  };
  const json = async (method, uri, value) => {
    const reply = await request(method, uri, value && JSON.stringify(value), value ? { 'Content-Type': 'application/json' } : {});
    return { status: reply.status, body: JSON.parse(reply.body) };
  };
  return { request, json };
}

// A SOAP envelope, with a UsernameToken unless token is null.
function soap(operation, token = usernameToken()) {
  const wss = 'http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-';
  const header = token === null ? '' : `<s:Header><Security xmlns="${wss}wssecurity-secext-1.0.xsd"><UsernameToken>` +
    `<Username>${USER}</Username><Password Type="${wss}username-token-profile-1.0#PasswordDigest">${token.digest}` +
    `</Password><Nonce>${token.nonce}</Nonce><Created>${token.created}</Created></UsernameToken></Security></s:Header>`;
  return `<s:Envelope xmlns:s="http://www.w3.org/2003/05/soap-envelope">${header}<s:Body>${operation}</s:Body></s:Envelope>`;
}

function usernameToken(created = new Date(), password = PASSWORD) {
  const nonce = crypto.randomBytes(16);
  const stamp = created.toISOString();
  const digest = crypto.createHash('sha1').update(Buffer.concat([nonce, Buffer.from(stamp + password)])).digest('base64');
  return { nonce: nonce.toString('base64'), created: stamp, digest };
}

const imaging = (op, inner = '') =>
  `<${op} xmlns="http://www.onvif.org/ver20/imaging/wsdl"><VideoSourceToken>VideoSource_1</VideoSourceToken>${inner}</${op}>`;

module.exports = { startSensord, digestClient, rawRequest, soap, usernameToken, imaging, USER, PASSWORD, OUT };

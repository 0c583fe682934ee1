// The tuning page: the channel's style as tabs and controls, each applied as
// it is moved, showing back what the module stored. Polls the channel so a
// scheme switch by the sensor thread shows at once.
'use strict';
const POLL_MS = 1000;
const state = { channel: 1, tab: null, data: null, busy: new Set(), scheme: null };
const $ = (id) => document.getElementById(id);

async function api(method, path, body) {
  const response = await fetch('/api/v1/channels' + path, {
    method, headers: body ? { 'Content-Type': 'application/json' } : {},
    body: body ? JSON.stringify(body) : undefined, cache: 'no-store' });
  const json = await response.json().catch(() => ({ error: 'no answer' }));
  return { ok: response.ok, json };
}

function notice(text) { $('notice').textContent = text; }

function showState(s) {
  $('status').textContent = (s.factorySet ? 'factory set' : 'scheme ' + s.scheme) +
    ', mode ' + s.mode + ', policy ' + s.policy;
  const select = $('scheme');
  if (select.options.length !== s.schemes + 1) {
    select.innerHTML = '';
    for (let i = 0; i <= s.schemes; i++) {
      select.add(new Option(i === s.schemes ? 'factory set' : 'scheme ' + i, i));
    }
  }
  select.value = s.scheme;
}

function makeControl(c) {
  let input;
  if (c.items) {
    input = document.createElement('select');
    for (const item of c.items) input.add(new Option(item.value + ' ' + item.name, item.value));
  } else if (c.type === 'button') {
    input = document.createElement('button');
    input.type = 'button';
    input.textContent = 'Run';
  } else {
    input = document.createElement('input');
    input.type = 'range';
    input.min = c.min ?? 0;
    input.max = c.max ?? 100;
  }
  input.id = 'ctl-' + c.key;
  if (c.value !== undefined && input.tagName !== 'BUTTON') input.value = c.value;
  return input;
}

async function apply(c, value, row) {
  state.busy.add(c.key);
  const r = await api('PUT', `/${state.channel}/parameters/${c.key}`, { value: Number(value) });
  state.busy.delete(c.key);
  const msg = row.querySelector('.msg');
  if (r.json.value !== undefined) {
    row.querySelector('.value').textContent = r.json.value;
    const input = row.querySelector('#ctl-' + c.key);
    if (input.tagName !== 'BUTTON' && String(input.value) !== String(r.json.value) &&
        document.activeElement !== input) input.value = r.json.value;
  }
  msg.textContent = r.ok ? (r.json.corrected || '') : (r.json.error || 'refused');
}

function renderTab() {
  const main = $('controls');
  main.innerHTML = '';
  const tab = state.data.tabs.find((t) => t.key === state.tab) || state.data.tabs[0];
  if (!tab) return;
  for (const c of tab.controls) {
    const row = document.createElement('div');
    row.className = 'row';
    const label = document.createElement('label');
    label.textContent = c.key + ' ' + c.name;
    const input = makeControl(c);
    label.htmlFor = input.id;
    const value = document.createElement('span');
    value.className = 'value';
    value.id = 'val-' + c.key;
    value.textContent = c.value ?? '';
    const msg = document.createElement('div');
    msg.className = 'msg';
    msg.id = 'msg-' + c.key;
    let timer = null;
    if (input.tagName === 'BUTTON') {
      input.addEventListener('click', () => apply(c, 1, row));
    } else if (input.type === 'range') {
      // Live while dragging (at most every 80 ms) and once more where it is let go.
      input.addEventListener('input', () => {
        clearTimeout(timer);
        timer = setTimeout(() => apply(c, input.value, row), 80);
      });
      input.addEventListener('change', () => { clearTimeout(timer); apply(c, input.value, row); });
    } else {
      input.addEventListener('change', () => apply(c, input.value, row));
    }
    row.append(label, input, value, msg);
    main.append(row);
  }
}

function renderTabs() {
  const nav = $('tabs');
  nav.innerHTML = '';
  if (!state.data.tabs.some((t) => t.key === state.tab)) state.tab = state.data.tabs[0]?.key;
  for (const t of state.data.tabs) {
    const b = document.createElement('button');
    b.type = 'button';
    b.role = 'tab';
    b.id = 'tab-' + t.key;
    b.textContent = t.name;
    b.setAttribute('aria-selected', t.key === state.tab);
    b.addEventListener('click', () => { state.tab = t.key; renderTabs(); renderTab(); });
    nav.append(b);
  }
}

async function load() {
  const r = await api('GET', `/${state.channel}/parameters`);
  if (!r.ok) { notice(r.json.error); return; }
  state.data = r.json;
  state.scheme = r.json.scheme;
  showState(r.json);
  renderTabs();
  renderTab();
}

// Values and state as they are now; controls being changed are left alone.
async function poll() {
  const r = await api('GET', `/${state.channel}/parameters`);
  if (!r.ok) return;
  showState(r.json);
  if (r.json.scheme !== state.scheme) notice('now ' + $('status').textContent);
  state.scheme = r.json.scheme;
  for (const tab of r.json.tabs) {
    for (const c of tab.controls) {
      const input = $('ctl-' + c.key);
      if (!input || state.busy.has(c.key) || document.activeElement === input) continue;
      if (input.tagName !== 'BUTTON') input.value = c.value;
      $('val-' + c.key).textContent = c.value ?? '';
    }
  }
}

async function start() {
  const r = await api('GET', '');
  if (!r.ok) { notice(r.json.error); return; }
  for (const ch of r.json) $('channel').add(new Option('channel ' + ch.channel, ch.channel));
  $('channel').addEventListener('change', () => { state.channel = Number($('channel').value); load(); });
  $('scheme').addEventListener('change', async () => {
    const s = await api('POST', `/${state.channel}/scheme`, { scheme: Number($('scheme').value) });
    notice(s.ok ? 'switched' : s.json.error);
    await load();
  });
  $('flush').addEventListener('click', async () => {
    const f = await api('POST', `/${state.channel}/flush`);
    notice(f.ok ? 'stored on flash' : 'flush refused: ' + f.json.error);
  });
  $('reset').addEventListener('click', async () => {
    if (!confirm('Remove every scheme of this channel and start from the factory set?')) return;
    const f = await api('POST', `/${state.channel}/reset`);
    notice(f.ok ? 'reset to the factory set' : f.json.error);
    await load();
  });
  await load();
  setInterval(poll, POLL_MS);
}

start();

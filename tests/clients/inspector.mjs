// Inspector plays the session without a model: by its command line, a process for each step, and by
// its web page in a headless browser.
import { checkResult, nextCall } from './session.mjs';

export const inspectorPackage = '@modelcontextprotocol/inspector';
const eras = ['legacy', 'auto', 'modern'];

async function commandLine({ run, server, home, record }, era) {
  const ask = async (...method) => {
    const options = ['-e', `ZORVIK_MCP_HOME=${home}`, '--protocol-era', era, '--format', 'json'];
    const { output } = await run('mcp-inspector', '--cli', ...options, server, '--method', ...method);
    // The server's own lines, and what Inspector says of a tool's error, stand beside the result.
    return JSON.parse(output.split('\n').find((line) => line.startsWith('{"result":'))).result;
  };
  record.tools = (await ask('tools/list')).tools.length;
  while (record.results < record.steps.length) {
    const { tool, args } = nextCall(record);
    const given = ['--tool-name', tool, '--tool-args-json', JSON.stringify(args)];
    const result = await ask('tools/call', ...given);
    checkResult(record, result, JSON.stringify(result));
  }
}

async function webPage({ start, server, home, record, place, screenshot }) {
  const options = ['-e', `ZORVIK_MCP_HOME=${home}`, '--protocol-era', 'auto'];
  const inspector = start('mcp-inspector', ['--web', ...options, server]);
  const { default: puppeteer } = await import('puppeteer-core');
  const browser = await puppeteer.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: ['--no-sandbox'],
    userDataDir: `${place}/browser`,
  });
  try {
    const [address] = await inspector.says(/http:\/\/127\S+TOKEN=\S+/);
    const page = await browser.newPage();
    page.setDefaultTimeout(60_000);
    await page.setViewport({ width: 1280, height: 900 });
    await page.goto(address);
    const click = async (selector) =>
      (await page.waitForSelector(selector)).evaluate((element) => element.click());
    await click('input[aria-label^="Connect"]');
    await click('::-p-xpath(//label[.="Tools"])');
    const title = await page.waitForSelector('::-p-xpath(//*[starts-with(text(), "Tools (")])');
    record.tools = Number(/\d+/.exec(await title.evaluate((e) => e.textContent)));
    let shown;
    while (record.results < record.steps.length) {
      const { tool, args } = nextCall(record);
      await click(`::-p-xpath(//button[.//*[text()="${tool}"]])`);
      if (Object.keys(args).length) {
        await click('::-p-xpath(//label[.="Edit as JSON"])');
        const editor = await page.waitForSelector('.ace_editor:not(.json-editor-readonly)');
        await editor.evaluate((e, text) => e.env.editor.setValue(text), JSON.stringify(args));
      }
      await click('::-p-xpath(//button[.="Execute Tool"])');
      shown = await waitForResult(page, shown?.document, tool === 'inspect_capture');
      checkResult(record, JSON.stringify(JSON.parse(shown.document)), shown.pictures);
      if (tool === 'inspect_capture') await page.screenshot({ path: screenshot });
    }
  } finally {
    await browser.close();
    await inspector.end();
  }
}

// What the page shows of a result: not the arguments, nor the result before.
async function waitForResult(page, before, picture) {
  const look = (previous, wanted) => {
    const document = window.document.querySelector('.json-editor-readonly')?.env?.editor.getValue();
    const sources = [...window.document.images].map(({ src }) => src);
    const pictures = sources.filter((source) => source.startsWith('data:image/png')).join();
    if (!document?.includes('"ok":') || document === previous) return undefined;
    return (!wanted || pictures) && { document, pictures };
  };
  return (await page.waitForFunction(look, {}, before, picture)).jsonValue();
}

export const inspectors = [
  ...eras.map((era) => ({
    name: `Inspector, command line, ${era}`,
    author: 'inspector-cli',
    drive: (context) => commandLine(context, era),
  })),
  { name: 'Inspector, web page', author: 'mcp-inspector', drive: webPage, needs: 'puppeteer-core' },
].map((kind) => ({
  ...kind,
  package: inspectorPackage,
  add: `mcp-inspector --${kind.drive === webPage ? 'web' : 'cli'} /path/to/zorvik_mcp`,
}));

// What is particular to each client that has a model. The stand-in is at `address`.
const prompt = 'Build a house with a door, look at it, and take it back.';

// As README and the manual give it; the real path takes the place of this one.
export const documentedPath = '/path/to/zorvik_mcp';

export const modelClients = [
  {
    name: 'Claude Code',
    package: '@anthropic-ai/claude-code',
    program: 'claude',
    add: `claude mcp add zorvik -- ${documentedPath}`,
    connected: /zorvik: .*✔ Connected/,
    environment: (address) => ({
      ANTHROPIC_BASE_URL: address,
      ANTHROPIC_API_KEY: 'none',
      CLAUDE_CODE_DISABLE_NONESSENTIAL_TRAFFIC: '1',
      // All tools at once, so that they can be counted.
      ENABLE_TOOL_SEARCH: 'false',
    }),
    session: ['-p', prompt, '--allowedTools', 'mcp__zorvik__*'],
    author: 'claude-code',
  },
  {
    name: 'Codex',
    package: '@openai/codex',
    program: 'codex',
    file: '.codex/config.toml',
    add: `[mcp_servers.zorvik]\ncommand = "${documentedPath}"\ntool_timeout_sec = 150\n`,
    // It passes no variables on.
    also: (home) => `env = { ZORVIK_MCP_HOME = "${home}" }\n`,
    // The list doesn't try the connection; that the tools come does.
    connected: /zorvik .* enabled/,
    settings: (address) =>
      'model = "stand-in"\nmodel_provider = "stand-in"\n[analytics]\nenabled = false\n' +
      `[model_providers.stand-in]\nname = "stand-in"\nbase_url = "${address}/v1"\nwire_api = "responses"\n`,
    session: ['exec', '--skip-git-repo-check', prompt],
    author: 'codex-mcp-client',
    viewer: 'view_image',
    picture: 'by its own `view_image`',
  },
  {
    name: 'Gemini CLI',
    package: '@google/gemini-cli',
    program: 'gemini',
    add: `gemini mcp add --scope user zorvik ${documentedPath}`,
    connected: /zorvik: .*Connected/,
    file: '.gemini/settings.json',
    settings: () =>
      JSON.stringify({
        security: { auth: { selectedType: 'gemini-api-key' } },
        privacy: { usageStatisticsEnabled: false },
        general: { enableAutoUpdate: false },
      }),
    environment: (address) => ({
      GOOGLE_GEMINI_BASE_URL: address,
      GEMINI_API_KEY: 'none',
      GEMINI_CLI_TRUST_WORKSPACE: 'true',
    }),
    session: ['-p', prompt, '--yolo', '-m', 'gemini-2.5-flash'],
    author: 'gemini-cli-mcp-client',
  },
  {
    name: 'Copilot CLI',
    package: '@github/copilot',
    program: 'copilot',
    add: `copilot mcp add zorvik -- ${documentedPath}`,
    connected: /zorvik \(local\)/,
    environment: (address) => ({
      COPILOT_OFFLINE: 'true',
      COPILOT_AUTO_UPDATE: 'false',
      COPILOT_PROVIDER_BASE_URL: `${address}/v1`,
      COPILOT_PROVIDER_API_KEY: 'none',
      COPILOT_PROVIDER_WIRE_API: 'responses',
      COPILOT_MODEL: 'gpt-5.4',
    }),
    session: ['-p', prompt, '--allow-all-tools'],
    author: 'copilot-cli',
    picture: 'no',
  },
];

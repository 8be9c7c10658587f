// Lets programs that test servers of the Model Context Protocol over HTTP only test quil-mcp: an address on loopback, each session a server
// of its own. Run by hand in a folder of its own, with the packages of the protocol's authors and Node 22:
//
//   npm install @modelcontextprotocol/conformance node@22
//   PATH=$PWD/node_modules/node/bin:$PATH node …/bridge.mjs …/clients/mcp/dist/src/main.js --runtime "quil-sim …/form.json" &
//   npx conformance server --url ADDRESS --scenario tools-list
//
// Of its scenarios those are of use that need no tools of their own on the server: server-initialize, ping, tools-list, resources-list,
// prompts-list.
import { randomUUID } from "node:crypto";
import { createServer } from "node:http";
import { createRequire } from "node:module";
import { join } from "node:path";

const require = createRequire(join(process.cwd(), "package.json"));
const { StdioClientTransport } = require("@modelcontextprotocol/sdk/client/stdio.js");
const { StreamableHTTPServerTransport } = require("@modelcontextprotocol/sdk/server/streamableHttp.js");

const sessions = new Map();

async function open() {
    const server = new StdioClientTransport({ command: process.execPath, args: process.argv.slice(2), env: process.env, stderr: "inherit" });
    const session = new StreamableHTTPServerTransport({ sessionIdGenerator: randomUUID, onsessioninitialized: (id) => sessions.set(id, session) });
    session.onmessage = (message) => void server.send(message);
    server.onmessage = (message) => session.send(message, {}).catch((error) => console.error(`bridge: ${error.message}`));
    session.onclose = () => void server.close();
    await server.start();
    await session.start();
    return session;
}

const http = createServer(async (request, response) => {
    const session = sessions.get(request.headers["mcp-session-id"]) ?? await open();
    await session.handleRequest(request, response);
});
http.listen(0, "127.0.0.1", () => console.log(`http://127.0.0.1:${http.address().port}/mcp`));

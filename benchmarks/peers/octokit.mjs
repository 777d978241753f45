// Lists pages of repositories with @octokit/rest, as its manual shows.

import { Octokit } from "@octokit/rest";

import { given, measure } from "./measured.mjs";

const client = new Octokit({ auth: "benchmark", baseUrl: `${given.base}/api/v3` });

await measure(async (page) => {
  const { data } = await client.rest.repos.listForAuthenticatedUser({ per_page: 100, page });
  if (data.length !== 100) throw new Error("a page is short");
});
process.exit(0);

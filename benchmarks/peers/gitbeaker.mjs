// Lists pages of projects with @gitbeaker/rest, as its manual shows.

import { Gitlab } from "@gitbeaker/rest";

import { given, measure } from "./measured.mjs";

const client = new Gitlab({ host: given.base, oauthToken: "benchmark" });

await measure(async (page) => {
  const data = await client.Projects.all({ perPage: 100, page, maxPages: 1 });
  if (data.length !== 100) throw new Error("a page is short");
});
process.exit(0);

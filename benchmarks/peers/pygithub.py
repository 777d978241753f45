"""Lists pages of repositories with PyGithub, as its manual shows."""

import github

from measured import arguments, measure

given = arguments()
client = github.Github(
    "benchmark", base_url=given["base"] + "/api/v3", per_page=100, verify=given["ca"]
)


def pages(count):
    listing = client.get_user().get_repos()
    for index in range(count):
        for repository in listing.get_page(index):
            assert repository.full_name and repository.clone_url
        yield repository


measure(pages, int(given["warm"]), int(given["pages"]))

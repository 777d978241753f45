"""Lists pages of projects with python-gitlab, as its manual shows."""

import gitlab

from measured import arguments, measure

given = arguments()
client = gitlab.Gitlab(given["base"], oauth_token="benchmark", ssl_verify=given["ca"])


def pages(count):
    for index in range(count):
        for project in client.projects.list(page=index + 1, per_page=100):
            assert project.path_with_namespace and project.http_url_to_repo
        yield project


measure(pages, int(given["warm"]), int(given["pages"]))

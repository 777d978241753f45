// Lists pages of repositories with go-github, as its manual shows.
package main

import (
	"context"
	"fmt"
	"os"
	"strconv"
	"strings"
	"syscall"

	"github.com/google/go-github/github"
)

func processor() int64 {
	var usage syscall.Rusage
	syscall.Getrusage(syscall.RUSAGE_SELF, &usage)
	return usage.Utime.Sec*1e6 + usage.Utime.Usec + usage.Stime.Sec*1e6 + usage.Stime.Usec
}

func list(client *github.Client, pages int) {
	for page := 1; page <= pages; page++ {
		options := &github.RepositoryListOptions{
			ListOptions: github.ListOptions{Page: page, PerPage: 100}}
		repositories, _, err := client.Repositories.List(context.Background(), "", options)
		if err != nil || len(repositories) != 100 {
			fmt.Fprintln(os.Stderr, "a page failed:", err)
			os.Exit(1)
		}
	}
}

func main() {
	given := map[string]string{}
	for _, word := range os.Args[1:] {
		name, value, _ := strings.Cut(word, "=")
		given[name] = value
	}
	client, err := github.NewEnterpriseClient(given["base"], given["base"], nil)
	if err != nil {
		fmt.Fprintln(os.Stderr, err)
		os.Exit(1)
	}
	warm, _ := strconv.Atoi(given["warm"])
	pages, _ := strconv.Atoi(given["pages"])
	list(client, warm)
	before := processor()
	list(client, pages)
	var usage syscall.Rusage
	after := processor()
	syscall.Getrusage(syscall.RUSAGE_SELF, &usage)
	fmt.Printf("{\"cpu_us\": %d, \"peak_kb\": %d}\n", after-before, usage.Maxrss)
}

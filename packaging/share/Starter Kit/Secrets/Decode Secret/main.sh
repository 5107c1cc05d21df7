#!/bin/sh
# Shows the values of the chosen secret. In a terminal, so that they stay out of the console's history.
if [ "$NAMESPACE" = "All Namespaces" ]; then
    echo "Choose the namespace of $SECRET first." >&2
else
    "$KUBECTL" get secret "$SECRET" --context="$CONTEXT" --namespace="$NAMESPACE" --output=go-template='{{
        range $key, $value := .data}}{{$key}}: {{$value | base64decode}}
{{end}}'
fi
echo "Press Return to close this window."
read -r _

# SPDX-License-Identifier: MIT
# Checks a bill of materials against the rules of SPDX 2.3, and prints what is in it.
#   jq --raw-output --from-file scripts/bill_of_materials.jq FILE

def must(what; condition): if condition then . else error("The bill of materials: " + what) end;
def id: type == "string" and test("^SPDXRef-[A-Za-z0-9.-]+$");
def asserted: type == "string" and length > 0;
def license: asserted and test("^(NOASSERTION|NONE|[A-Za-z0-9.+-]+( (AND|OR|WITH) [A-Za-z0-9.+-]+)*)$");
def agent: asserted and test("^(NOASSERTION|(Person|Organization): .+)$");
def creator: asserted and test("^(Person|Organization|Tool): .+$");

. as $document
| must("spdxVersion"; .spdxVersion == "SPDX-2.3")
| must("dataLicense"; .dataLicense == "CC0-1.0")
| must("SPDXID"; .SPDXID == "SPDXRef-DOCUMENT")
| must("name"; .name | asserted)
| must("documentNamespace"; .documentNamespace | test("^https?://[^#]+$"))
| must("created"; .creationInfo.created | test("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ$"))
| must("creators"; .creationInfo.creators | length > 0 and all(creator))
| must("members"; keys - ["SPDXID", "creationInfo", "dataLicense", "documentNamespace", "name",
    "packages", "relationships", "spdxVersion"] == [])
| must("packages"; .packages | length > 0)
| must("identifiers"; [.packages[].SPDXID] | all(id) and length == (unique | length))
| must("what is described"; any(.relationships[]; .relationshipType == "DESCRIBES"
    and .spdxElementId == "SPDXRef-DOCUMENT"))
| must("relationships"; all(.relationships[];
    (.relationshipType | IN("DESCRIBES", "CONTAINS", "STATIC_LINK"))
    and all([.spdxElementId, .relatedSpdxElement][]; . as $one
      | any($document | .SPDXID, .packages[].SPDXID; . == $one))))
| must("toml++ and CLI11"; [.packages[].name] | contains(["toml++", "CLI11", "nlohmann-json"]))
| .packages[]
| must(.name + ", members"; keys - ["SPDXID", "copyrightText", "downloadLocation", "filesAnalyzed",
    "licenseConcluded", "licenseDeclared", "name", "primaryPackagePurpose", "supplier", "versionInfo"] == [])
| must("name"; .name | asserted)
| must(.name + ", versionInfo"; .versionInfo | asserted)
| must(.name + ", downloadLocation"; .downloadLocation | asserted)
| must(.name + ", filesAnalyzed"; .filesAnalyzed == false)
| must(.name + ", supplier"; .supplier | agent)
| must(.name + ", licenses"; [.licenseConcluded, .licenseDeclared] | all(license))
| must(.name + ", copyrightText"; .copyrightText | asserted)
| "\(.name) \(.versionInfo): \(.licenseDeclared)"
